// The search for frames in texts of any bytes: what is found lies in the text, is found again in
// its own part, and nothing behind the text is read.
#include "input.h"

#include <frame_text.h>

#include <cstdint>
#include <cstring>
#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
	const std::unique_ptr<char[]> block(new char[size]); // so that a byte too far is seen
	if (size > 0) std::memcpy(block.get(), data, size);
	const std::string_view text(block.get(), size);
	Found_frame found;
	for (std::size_t at = 0; find_frame(text, at, found); at = found.begin + found.length) {
		require(found.begin >= at && found.length > 0 && found.begin + found.length <= size);
		require(!found.frame.name.empty());
		Found_frame again;
		require(find_frame(text.substr(found.begin, found.length), 0, again));
		require(again.begin == 0 && again.frame.name == found.frame.name &&
		        again.frame.offset == found.frame.offset);
		require(guid_text(again.frame.guid).size() == 34);
	}
	return 0;
}
