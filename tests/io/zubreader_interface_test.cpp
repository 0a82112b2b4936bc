// The interfaces of reading and writing: their order, and the vector that is made of numbers.

#include <morvantis/io/zubreader_interface.h>

#include <morvantis/io/zubdeserializable_interface.h>
#include <morvantis/io/zubserializable_interface.h>
#include <morvantis/io/zubwriter_interface.h>
#include <morvantis/math/xylint_vec3.h>
#include <morvantis/strings/xylvarstring.h>

#include "virtual_order.h"

#include <gtest/gtest.h>

#include <type_traits>
#include <vector>

static_assert(!std::has_virtual_destructor_v<zubReader_interface>);
static_assert(!std::has_virtual_destructor_v<zubWriter_interface>);
static_assert(!std::has_virtual_destructor_v<zubSerializable_interface>);
static_assert(!std::has_virtual_destructor_v<zubDeserializable_interface>);
static_assert(sizeof(zubReader_interface) == sizeof(void*), "no data");
static_assert(sizeof(zubWriter_interface) == sizeof(void*), "no data");
static_assert(sizeof(zubSerializable_interface) == sizeof(void*), "no data");
static_assert(sizeof(zubDeserializable_interface) == sizeof(void*), "no data");

namespace {

template <typename Value> size_t place_of_read() {
	return virtual_index<bool (zubReader_interface::*)(Value&)>(&zubReader_interface::read);
}

template <typename Value> size_t place_of_write() {
	return virtual_index<void (zubWriter_interface::*)(Value)>(&zubWriter_interface::write);
}

// Answers read(int&) from a list, and fails where the list holds `bad`.
class Listed_reader : public zubReader_interface {
public:
	static const int bad = -999;
	explicit Listed_reader(std::vector<int> values) : values_(values) {}

	bool read(xylInt_vec3&) override { return false; }
	bool read(xylInt64&) override { return false; }
	bool read(unsigned int&) override { return false; }
	bool read(unsigned short&) override { return false; }
	bool read(xylUInt64&) override { return false; }
	bool read(short&) override { return false; }
	bool read(double&) override { return false; }
	bool read(float&) override { return false; }
	bool read(char&) override { return false; }
	bool read(bool&) override { return false; }
	bool read(int& value) override {
		const int next = values_.at(calls++);
		if (next == bad) return false;
		value = next;
		return true;
	}
	bool read(xylVarString&) override { return false; }

	size_t calls = 0;

private:
	std::vector<int> values_;
};

// Keeps what comes through write(int).
class Listing_writer : public zubWriter_interface {
public:
	void write(const xylInt_vec3&) override { others = true; }
	void write(xylInt64) override { others = true; }
	void write(double) override { others = true; }
	void write(float) override { others = true; }
	void write(xylUInt64) override { others = true; }
	void write(bool) override { others = true; }
	void write(unsigned int) override { others = true; }
	void write(int value) override { values.push_back(value); }
	void write(const xylVarString&) override { others = true; }

	std::vector<int> values;
	bool others = false;
};

} // namespace

TEST(zubReader_interface, OperationsStandInTheirOrder) {
	EXPECT_EQ(place_of_read<xylInt_vec3>(), 0u);
	EXPECT_EQ(place_of_read<xylInt64>(), 1u);
	EXPECT_EQ(place_of_read<unsigned int>(), 2u);
	EXPECT_EQ(place_of_read<unsigned short>(), 3u);
	EXPECT_EQ(place_of_read<xylUInt64>(), 4u);
	EXPECT_EQ(place_of_read<short>(), 5u);
	EXPECT_EQ(place_of_read<double>(), 6u);
	EXPECT_EQ(place_of_read<float>(), 7u);
	EXPECT_EQ(place_of_read<char>(), 8u);
	EXPECT_EQ(place_of_read<bool>(), 9u);
	EXPECT_EQ(place_of_read<int>(), 10u);
	EXPECT_EQ(place_of_read<xylVarString>(), 11u);
}

TEST(zubWriter_interface, OperationsStandInTheirOrder) {
	EXPECT_EQ(place_of_write<const xylInt_vec3&>(), 0u);
	EXPECT_EQ(place_of_write<xylInt64>(), 1u);
	EXPECT_EQ(place_of_write<double>(), 2u);
	EXPECT_EQ(place_of_write<float>(), 3u);
	EXPECT_EQ(place_of_write<xylUInt64>(), 4u);
	EXPECT_EQ(place_of_write<bool>(), 5u);
	EXPECT_EQ(place_of_write<unsigned int>(), 6u);
	EXPECT_EQ(place_of_write<int>(), 7u);
	EXPECT_EQ(place_of_write<const xylVarString&>(), 8u);
}

TEST(zubSerializable_interface, HasOneOperation) {
	EXPECT_EQ(virtual_index(&zubSerializable_interface::serialize), 0u);
	EXPECT_EQ(virtual_index(&zubDeserializable_interface::deserialize), 0u);
}

TEST(zubReader_interface, VectorTakesThreeNumbers) {
	Listed_reader reader({7, -8, 9, 10});
	xylInt_vec3 v(1, 2, 3);
	EXPECT_TRUE(read_intvec3(&reader, v));
	EXPECT_EQ(v, xylInt_vec3(7, -8, 9));
	EXPECT_EQ(reader.calls, 3u);
}

TEST(zubReader_interface, VectorReadsOnBehindABadNumberAndTakesZeroForIt) {
	const int bad = Listed_reader::bad;
	for (size_t place = 0; place < 3; ++place) {
		SCOPED_TRACE(place);
		std::vector<int> values = {7, 8, 9};
		values[place] = bad;
		Listed_reader reader(values);
		xylInt_vec3 v(1, 2, 3);
		EXPECT_FALSE(read_intvec3(&reader, v));
		EXPECT_EQ(reader.calls, 3u);
		for (int& value : values) value = value == bad ? 0 : value;
		EXPECT_EQ(v, xylInt_vec3(values[0], values[1], values[2]));
	}
}

TEST(zubWriter_interface, VectorIsThreeNumbers) {
	Listing_writer writer;
	write_intvec3(&writer, xylInt_vec3(1, -2, 3));
	EXPECT_EQ(writer.values, (std::vector<int>{1, -2, 3}));
	EXPECT_FALSE(writer.others);
}
