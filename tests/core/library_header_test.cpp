// Every public header together, as a host may include them. The build checks that none is missing.
#include <morvantis/library.h>

#include <gtest/gtest.h>

TEST(library_header, BringsInEveryFolder) {
	EXPECT_NE(zub_library, nullptr);              // core
	EXPECT_EQ(xyl_heap_allocate(0), nullptr);     // memory
	EXPECT_EQ(xylVarString("text").length(), 4u); // strings
	EXPECT_FALSE(QoNet().is_initialized);         // net
}
