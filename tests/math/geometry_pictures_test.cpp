// The pictures of docs/geometry.md are drawn from the library's operations; the committed ones have
// to be what those draw now.

#include "../../tools/geometry_pictures/pictures.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <test_data.h>

TEST(Geometry_pictures, AreWhatTheOperationsDraw) {
	const std::vector<Picture> pictures = geometry_pictures();
	EXPECT_EQ(pictures.size(), 4u);
	for (const Picture& picture : pictures) {
		SCOPED_TRACE(picture.name + ": drawn anew by the target docs-pictures");
		const std::string path = test_data(("../docs/pictures/" + picture.name).c_str());
		std::ifstream file(path, std::ios::binary);
		ASSERT_TRUE(file.is_open());
		const std::string committed((std::istreambuf_iterator<char>(file)), {});
		EXPECT_EQ(committed, picture.svg);
	}
}
