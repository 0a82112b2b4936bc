// Tells two images apart that were loaded at one address.
#pragma once

namespace os {

// The first eight bytes of the build id of the image whose first page this is; null when there is
// none, or when its note isn't in this page, where linkers place it. Reads nothing but the page.
const unsigned char* find_build_id(const unsigned char* first_page);

} // namespace os
