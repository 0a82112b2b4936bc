// How a text resource is prepared, byte by byte, and random texts to prepare.
#pragma once

#include <morvantis/io/resource_text.h>

#include <algorithm>
#include <random>
#include <string>

// Byte by byte, in the two stretches of the rule. The text is followed by a zero byte, which the
// second stretch may visit, and has a separator within its last 30 bytes.
inline Resource_text_flaws prepare_plainly(std::string& text) {
	Resource_text_flaws flaws;
	const auto step = [&](std::size_t at) {
		const auto c = static_cast<signed char>(text.data()[at]);
		if (c == ',') {
			text[at] = '.';
			flaws.has_comma = true;
		}
		if (c >= 33) return false;
		if (c != 0 && c != 9 && c != 10 && c != 13 && c != 32) {
			flaws.last_bad_byte = static_cast<xylUInt8>(c);
		}
		if (at < text.size()) text[at] = 0;
		return true;
	};
	std::size_t at = 0;
	for (;;) {
		const bool was_replaced = step(at++);
		if (was_replaced && at + 30 >= text.size()) break;
	}
	do {
		step(at++);
	} while (at < text.size());
	return flaws;
}

// Any bytes; mostly clean; commas only: with a separator where the rule asks for one.
inline std::string random_resource_text(std::mt19937& random) {
	std::string text(1 + random() % 300, 0);
	const auto kind = random() % 3;
	for (char& c : text) {
		const auto bits = random();
		c = static_cast<char>('a' + bits % 26);
		if (bits >> 24 < 40) c = " \t\r\n"[bits >> 8 & 3];
		if (kind == 0 || (kind == 1 && bits >> 22 == 0)) c = static_cast<char>(bits >> 8);
		if (kind == 2 && bits >> 24 == 255) c = ',';
	}
	text[text.size() - 1 - random() % std::min<std::size_t>(text.size(), 30)] = ' ';
	return text;
}
