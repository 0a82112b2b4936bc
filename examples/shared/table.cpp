#include "table.h"

#include <algorithm>
#include <cstdio>

std::string in_digits(double number, int digits) {
	char text[64];
	std::snprintf(text, sizeof(text), "%.*f", digits, number);
	return text;
}

void Table::print() const {
	const size_t columns = rows_[0].size();
	std::vector<size_t> widths(columns, 0);
	std::vector<bool> is_number(columns, rows_.size() > 1);
	for (const Row& row : rows_) {
		for (size_t i = 0; i < columns; ++i) {
			widths[i] = std::max(widths[i], row[i].size());
			const bool is_digit = row[i][0] >= '0' && row[i][0] <= '9';
			if (&row != &rows_[0] && !is_digit && row[i] != "-") is_number[i] = false;
		}
	}
	std::printf("\n");
	for (const Row& row : rows_) {
		std::string line;
		for (size_t i = 0; i < columns; ++i) {
			const std::string space(widths[i] - row[i].size(), ' ');
			line += "  " + (is_number[i] ? space + row[i] : row[i] + space);
		}
		std::printf("%s\n", line.substr(0, line.find_last_not_of(' ') + 1).c_str());
		if (&row != &rows_[0]) continue;
		std::string rule;
		for (const size_t width : widths) rule += "  " + std::string(width, '-');
		std::printf("%s\n", rule.c_str());
	}
}
