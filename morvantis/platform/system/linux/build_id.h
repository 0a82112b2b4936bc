// Tells two images apart that were loaded at one address.
#pragma once

#include <morvantis/core/xyltypes.h>

namespace os {

struct Build_id_note {
	const unsigned char* bytes = nullptr; // within the notes; null when there is none
	size_t size = 0;
};

// The first build id in a run of notes. Each note's name and descriptor end at a multiple of
// `step`, 4 or 8, from its beginning; whatever leads out of the run ends the search.
Build_id_note find_build_id_note(const unsigned char* notes, size_t size, size_t step);

// The first eight bytes of the build id of the image whose first page this is; null when there is
// none, or when its note isn't in this page, where linkers place it. Reads nothing but the page.
const unsigned char* find_build_id(const unsigned char* first_page);

} // namespace os
