// One HTML file that shows a recording in any browser and needs nothing else.
#pragma once

#include <cstddef>
#include <string>

// `page` is the path of the page without data, `data` the block of a Recording. False when the page
// can't be read or the file can't be written; `*written` is the file's size.
bool write_page(const std::string& page, const unsigned char* data, size_t size,
                const std::string& path, size_t* written);
