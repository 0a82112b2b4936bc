// A small root for the engine's plain game objects.
#pragma once

#include <morvantis/core/xyltypes.h>

// Two words and two hooks; the library gives no meaning to either and calls neither.
class MORVANTIS_API xylSimple_game_object {
public:
	// Leaves the words unset.
	xylSimple_game_object() = default;
	xylSimple_game_object(const xylSimple_game_object& source);
	xylSimple_game_object& operator=(const xylSimple_game_object& source);
	virtual ~xylSimple_game_object() = default;

	// Their bodies are empty, for derived classes to call.
	virtual void _xyl_construct_obj() = 0;
	virtual void _xyl_destruct_obj() = 0;

	xylUInt32 first_word_;
	xylUInt32 second_word_;
};
