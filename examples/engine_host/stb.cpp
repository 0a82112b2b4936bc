// The bodies of the two header libraries that write pictures and read fonts.
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_TRUETYPE_IMPLEMENTATION
#include <stb/stb_image_write.h>
#include <stb/stb_truetype.h>
