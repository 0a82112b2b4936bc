#include <morvantis/diagnostics/xylcolor.h>

constinit const xylColor xylColor::SOLID_BLACK = 0xFF000000;
constinit const xylColor xylColor::SOLID_RED = 0xFFFF0000;
constinit const xylColor xylColor::SOLID_GREEN = 0xFF00FF00;
constinit const xylColor xylColor::SOLID_BLUE = 0xFF0000FF;
constinit const xylColor xylColor::SOLID_CYAN = 0xFF00FFFF;
constinit const xylColor xylColor::SOLID_MAGENTA = 0xFFFF00FF;
constinit const xylColor xylColor::SOLID_YELLOW = 0xFFFFFF00;
constinit const xylColor xylColor::SOLID_GRAY = 0xFFAAAAAA;
constinit const xylColor xylColor::SOLID_WHITE = 0xFFFFFFFF;
