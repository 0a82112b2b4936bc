// Aligned tables on the terminal.
#pragma once

#include <string>
#include <vector>

// `number` with `digits` behind the point.
std::string in_digits(double number, int digits);

class Table {
public:
	using Row = std::vector<std::string>;

	explicit Table(Row head) { rows_.push_back(head); }
	void add(Row row) { rows_.push_back(row); }
	// A column whose entries below the head all begin with a digit, or are "-", stands at its right
	// edge.
	void print() const;

private:
	std::vector<Row> rows_; // of the same length; the first is the head
};
