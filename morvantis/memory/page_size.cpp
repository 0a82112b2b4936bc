#include <morvantis/memory/page_size.h>

#include <morvantis/platform/system/memory.h>

#include <algorithm>

xylUInt64 ask_page_size() {
	const os::Page_sizes sizes = os::page_sizes();
	return std::max(sizes.granularity_bytes, sizes.page_bytes);
}

xylUInt64 known_page_size() {
	static const xylInt32 size = static_cast<xylInt32>(ask_page_size());
	return static_cast<xylUInt64>(static_cast<xylInt64>(size));
}
