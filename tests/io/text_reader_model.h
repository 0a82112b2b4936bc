// The number readers of a text stream written down plainly: each token is copied byte by byte and
// then converted. What the streams do with tokens where they stand must come to the same.
#pragma once

#include <morvantis/core/number_parse.h>
#include <morvantis/io/xylio_text_stream.h>

#include <algorithm>
#include <bit>
#include <string>

class Text_reader_model {
public:
	explicit Text_reader_model(const xylVarString& source)
		: text_(source.char_p(), static_cast<std::size_t>(source.length())),
		  cursor_(static_cast<unsigned int>(source.get_cursor_position())) {}

	unsigned int cursor() const { return cursor_; }
	int reports() const { return reports_; } // of the end of the data

	void read(char& value) { value = static_cast<char>(number_parse::parse_uint32(token())); }
	void read(unsigned char& value) {
		value = static_cast<unsigned char>(number_parse::parse_int32(token()));
	}
	void read(short& value) { value = static_cast<short>(number_parse::parse_int32(token())); }
	void read(unsigned short& value) {
		value = static_cast<unsigned short>(number_parse::parse_int32(token()));
	}
	void read(int& value) { value = static_cast<int>(number_parse::parse_uint32(token())); }
	void read(unsigned int& value) { value = number_parse::parse_uint32(token()); }
	void read(bool& value) { value = number_parse::parse_int32(token()) != 0; }
	void read(float& value) { value = static_cast<float>(number_parse::parse_double(token())); }
	void read(double& value) {
		value = static_cast<double>(static_cast<float>(number_parse::parse_double(token())));
	}
	void read(xylUInt64& value) {
		token();
		value = digits_from(0);
	}
	void read(xylInt64& value) {
		token();
		const bool negative = !token_.empty() && token_[0] == '-';
		const xylUInt64 digits = digits_from(negative ? 1 : 0);
		value = static_cast<xylInt64>(negative ? 0 - digits : digits);
	}

private:
	static bool is_separator(char c) { return static_cast<unsigned char>(c) < 33; }
	bool at_end() const { return cursor_ >= text_.size(); }

	const char* token() {
		token_.clear();
		while (!at_end() && is_separator(text_[cursor_])) ++cursor_;
		if (at_end()) {
			++reports_;
			return token_.c_str();
		}
		constexpr std::size_t limit = 8192;
		const bool quoted = text_[cursor_] == '"';
		if (quoted) ++cursor_;
		while (!at_end() && token_.size() < limit &&
		       (quoted ? text_[cursor_] != '"' : !is_separator(text_[cursor_]))) {
			token_ += text_[cursor_++];
		}
		if (quoted) ++cursor_;
		token_.resize(std::min(token_.size(), limit - 1)); // the terminator's place
		return token_.c_str();
	}

	// From the last to the first, whatever characters they are.
	xylUInt64 digits_from(std::size_t first) const {
		xylUInt64 sum = 0;
		xylUInt64 power = 1;
		for (std::size_t i = token_.size(); i-- > first; power *= 10) {
			sum += power * static_cast<xylUInt64>(static_cast<xylInt64>(token_[i] - '0'));
		}
		return sum;
	}

	std::string text_;
	std::string token_;
	unsigned int cursor_;
	int reports_ = 0;
};

// Reads one value from both and tells whether bits and cursors agree.
template <typename Value> bool reads_alike(xylIO_text_stream& stream, Text_reader_model& model) {
	Value value{};
	Value expected{};
	stream >> value;
	model.read(expected);
	if (static_cast<unsigned int>(stream.buffer.get_cursor_position()) != model.cursor()) {
		return false;
	}
	if constexpr (std::is_same_v<Value, double>) {
		return std::bit_cast<xylUInt64>(value) == std::bit_cast<xylUInt64>(expected);
	} else if constexpr (std::is_same_v<Value, float>) {
		return std::bit_cast<xylUInt32>(value) == std::bit_cast<xylUInt32>(expected);
	} else {
		return value == expected;
	}
}

using Reader_pair = bool (*)(xylIO_text_stream&, Text_reader_model&);
constexpr Reader_pair reader_pairs[] = {
	reads_alike<char>,     reads_alike<unsigned char>,  reads_alike<short>,
	reads_alike<int>,      reads_alike<unsigned short>, reads_alike<unsigned int>,
	reads_alike<xylInt64>, reads_alike<xylUInt64>,      reads_alike<bool>,
	reads_alike<float>,    reads_alike<double>,
};
