#include <morvantis/core/xylsimple_game_object.h>

#include <cstring>

xylSimple_game_object::xylSimple_game_object(const xylSimple_game_object& source) {
	*this = source;
}

// As bytes: the words need not have been set.
xylSimple_game_object& xylSimple_game_object::operator=(const xylSimple_game_object& source) {
	std::memmove(&first_word_, &source.first_word_, sizeof(first_word_));
	std::memmove(&second_word_, &source.second_word_, sizeof(second_word_));
	return *this;
}

void xylSimple_game_object::_xyl_construct_obj() {}
void xylSimple_game_object::_xyl_destruct_obj() {}
