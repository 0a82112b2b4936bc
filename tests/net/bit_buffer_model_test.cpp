// Random sequences of all operations of a bit buffer, beside the model, at fixed seeds.

#include "bit_stream_model.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

// Two buffers with their models, since some operations take a second buffer.
class Bit_buffer_model_test : public testing::TestWithParam<unsigned int> {
protected:
	int below(int limit) { return static_cast<int>(random_() % static_cast<unsigned int>(limit)); }
	unsigned int any_32() { return static_cast<unsigned int>(random_()); }
	unsigned long long any_64() { return random_(); }

	// Room for one field more, or the writer starts again. A write below the size raises that too.
	bool has_room(int which, int bits) {
		const Bit_stream_model& model = model_[which];
		return std::max(model.cursor, model.size) + bits <= model.capacity;
	}
	void start_again(int which) {
		if (below(2) == 0) {
			buffer_[which].clear();
			model_[which].clear();
		} else {
			buffer_[which].rewind();
			model_[which].cursor = 0;
		}
	}

	void append(int which) {
		const int count = below(33);
		const unsigned int value = any_32() >> below(32); // often wider than the field
		if (!has_room(which, count)) return start_again(which);
		buffer_[which].append_bits_from_uint32(value, count);
		model_[which].append_32(value, count);
	}
	void append_wide(int which) {
		const int count = 32 + below(33);
		const unsigned long long value = any_64() >> below(64);
		if (!has_room(which, count)) return start_again(which);
		buffer_[which].append_bits_from_uint64(value, count);
		model_[which].append_64(value, count);
	}
	void append_array(int which) {
		unsigned char data[200];
		for (unsigned char& byte : data) byte = static_cast<unsigned char>(any_32());
		const int count = below(2) == 0 ? below(1601) : below(80);
		if (!has_room(which, (count + 7) / 8 * 8)) return start_again(which);
		buffer_[which].append_bits_from_array(data, count);
		model_[which].append_array(data, count);
	}
	void append_buffer(int which) {
		const int other = 1 - which;
		const int count = below(300);
		const int bytes = (count + 7) / 8 * 8;
		if (!has_room(which, bytes)) return start_again(which);
		if (!has_room(other, bytes)) return start_again(other);
		model_[which].append_from(model_[other], count);
		if (below(2) == 0) {
			buffer_[which].append_bits_const(&buffer_[other], static_cast<unsigned int>(count));
		} else {
			buffer_[which].append_bits(&buffer_[other], count);
			model_[other].cursor += count;
		}
	}
	void read(int which) {
		const bool is_wide = below(2) == 0;
		const int count = is_wide ? 32 + below(33) : below(33);
		unsigned long long expected = 0x5555555555555555u;
		const bool has_bits = model_[which].read(expected, count);
		unsigned long long out_64 = 0x5555555555555555u;
		unsigned int out_32 = 0x55555555u;
		if (is_wide) {
			EXPECT_EQ(buffer_[which].read_bits_to_uint64(out_64, count), has_bits);
			EXPECT_EQ(out_64, expected);
		} else {
			EXPECT_EQ(buffer_[which].read_bits_to_uint32(out_32, count), has_bits);
			EXPECT_EQ(out_32, static_cast<unsigned int>(expected));
		}
	}
	void read_array(int which) {
		unsigned char seen[200], expected[200];
		std::memset(seen, 0x77, sizeof(seen));
		std::memset(expected, 0x77, sizeof(expected));
		const int count = below(3) == 0 ? below(1601) : below(80);
		EXPECT_EQ(buffer_[which].read_bits_from_array(seen, count),
		          model_[which].read_array(expected, count));
		EXPECT_EQ(std::memcmp(seen, expected, sizeof(seen)), 0) << count;
	}
	void skip(int which) {
		if (below(2) == 0) {
			const int count = below(70);
			buffer_[which].skip_bits(count);
			model_[which].skip(count);
			return;
		}
		const int position = model_[which].cursor;
		buffer_[which].skip_to_next_byte();
		if (position % 8 != 0) model_[which].skip(8 - position % 8);
	}
	void shrink(int which) {
		const int bits = below(model_[which].size + 1);
		buffer_[which].shrink_size_to(bits);
		model_[which].shrink(bits);
	}
	void move_cursor(int which) {
		const int back = below(model_[which].cursor + 1);
		buffer_[which].rewind_by(back);
		model_[which].cursor -= back;
	}
	void grow(int which) {
		const int bits = below(20000);
		buffer_[which].guarantee_capacity_in_bits(bits);
		model_[which].guarantee(bits);
	}
	void copy(int which) {
		static_cast<Dynamic_bit_buffer&>(buffer_[which]) = buffer_[1 - which];
		model_[which].copy_from(model_[1 - which]);
	}

	void one_step() {
		using Operation = void (Bit_buffer_model_test::*)(int);
		struct Weighted {
			int weight;
			Operation operation;
		};
		static constexpr Weighted operations[] = {
			{240, &Bit_buffer_model_test::append},      {120, &Bit_buffer_model_test::append_wide},
			{60, &Bit_buffer_model_test::append_array}, {60, &Bit_buffer_model_test::append_buffer},
			{120, &Bit_buffer_model_test::read},        {60, &Bit_buffer_model_test::read_array},
			{40, &Bit_buffer_model_test::skip},         {12, &Bit_buffer_model_test::shrink},
			{40, &Bit_buffer_model_test::move_cursor},  {2, &Bit_buffer_model_test::start_again},
			{2, &Bit_buffer_model_test::grow},          {2, &Bit_buffer_model_test::copy},
		};
		int drawn = below(758);
		for (const Weighted& entry : operations) {
			drawn -= entry.weight;
			if (drawn < 0) return (this->*entry.operation)(below(2));
		}
		FAIL() << "the weights are " << drawn << " too few";
	}

	std::mt19937_64 random_{GetParam()};
	Open_bit_buffer buffer_[2];
	Bit_stream_model model_[2];
};

TEST_P(Bit_buffer_model_test, EveryOperationLeavesTheBytesOfTheModel) {
	for (int step = 0; step < 6000; ++step) {
		SCOPED_TRACE(step);
		one_step();
		for (int which = 0; which < 2; ++which) {
			ASSERT_EQ(model_[which].difference(buffer_[which]), "") << "buffer " << which;
		}
		if (HasFailure()) return;
	}
}

INSTANTIATE_TEST_SUITE_P(Seeds, Bit_buffer_model_test, testing::Range(1u, 9u));

} // namespace
