#include <morvantis/core/zubobject.h>

#include <morvantis/core/xylreference_counted_object.h>

#include "virtual_order.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>

static_assert(sizeof(zubObject_type_definition) == 132);
static_assert(offsetof(zubObject_type_definition, type_name) == 4);
static_assert(std::is_trivially_copyable_v<zubObject_type_definition>);
static_assert(sizeof(zubObject) == sizeof(void*), "no data");
static_assert(std::is_abstract_v<zubObject>);
static_assert(
	std::is_same_v<decltype(zubObject::get_type_definition(0)), zubObject_type_definition>,
	"a copy");

namespace {

// Whose registering operation a test may call.
class Sample_object : public zubObject {
public:
	using zubObject::genereate_new_type_id;
	int get_type_id() const override { return class_Sample_object_type_id_; }
	xylConstString<128> get_type_name() const override { return "Sample_object"; }
	static int class_Sample_object_type_id_;

	int number = 0;
};
int Sample_object::class_Sample_object_type_id_ = genereate_new_type_id("Sample_object");

// What the registry held before main(), where nothing of the library has been called yet.
const int count_at_start = zubObject::get_type_definition_count();

TEST(zubObject, OperationsStandInTheirOrder) {
	// Behind the destructor, which has two entries in this compiler family.
	EXPECT_EQ(virtual_index(&zubObject::get_type_id), 2u);
	EXPECT_EQ(virtual_index(&zubObject::get_type_name), 3u);
	EXPECT_EQ(virtual_index(&zubObject::to_string), 4u);
}

TEST(zubObject, FirstTypeIsTheLibrarysOwn) {
	const zubObject_type_definition first = zubObject::get_type_definition(0);
	EXPECT_EQ(first.type_id, 0);
	EXPECT_STREQ(first.type_name, "xylReference_counted_object");
	EXPECT_EQ(Sample_object::class_Sample_object_type_id_, 1) << "the host's follow";
	EXPECT_EQ(count_at_start, 2);
	EXPECT_STREQ(zubObject::get_type_definition(1).type_name, "Sample_object");
}

TEST(zubObject, NumbersFollowTheOrderOfRegistration) {
	const int before = zubObject::get_type_definition_count();
	EXPECT_EQ(zubObject::total_type_count_, before);
	EXPECT_EQ(Sample_object::genereate_new_type_id("Twice"), before);
	EXPECT_EQ(Sample_object::genereate_new_type_id("Twice"), before + 1) << "names don't matter";
	EXPECT_EQ(Sample_object::genereate_new_type_id(""), before + 2);
	EXPECT_EQ(zubObject::get_type_definition_count(), before + 3);
	EXPECT_EQ(zubObject::type_definitions_->size(), static_cast<size_t>(before) + 3);
	for (int i = 0; i < before + 3; ++i) {
		EXPECT_EQ(zubObject::get_type_definition(i).type_id, i);
	}
	EXPECT_STREQ(zubObject::get_type_definition(before + 1).type_name, "Twice");
	EXPECT_STREQ(zubObject::get_type_definition(before + 2).type_name, "");
	// The first records are where they were, and so are the names.
	EXPECT_STREQ(zubObject::get_type_definition(0).type_name, "xylReference_counted_object");
}

TEST(zubObject, NamesHaveUpTo127Characters) {
	const std::string longest(127, 'n');
	const int id = Sample_object::genereate_new_type_id(longest.c_str());
	EXPECT_EQ(zubObject::get_type_definition(id).type_name, longest);
}

TEST(zubObject, All128BytesOfTheNamesStorageAreStored) {
	// A copy ends at the first zero byte, so what is behind it must be written where the registry
	// reads: in the argument itself, which is built in place here.
	struct Marked_name {
		static xylConstString<128> make() {
			xylConstString<128> name(std::string(127, 'x').c_str());
			name = "short";
			return name;
		}
	};
	const int id = Sample_object::genereate_new_type_id(Marked_name::make());
	const zubObject_type_definition definition = zubObject::get_type_definition(id);
	EXPECT_EQ(std::string(definition.type_name, 128),
	          std::string("short\0", 6) + std::string(121, 'x') + '\0');
}

TEST(zubObject, IndexOutOfRangeThrows) {
	const int count = zubObject::get_type_definition_count();
	EXPECT_NO_THROW(zubObject::get_type_definition(count - 1));
	for (const int index : {count, count + 1, -1, 0x7FFFFFFF}) {
		SCOPED_TRACE(index);
		try {
			zubObject::get_type_definition(index);
			ADD_FAILURE() << "did not throw";
		} catch (const std::out_of_range& problem) {
			EXPECT_STREQ(problem.what(), "invalid vector<T> subscript");
		}
	}
}

TEST(zubObject, CopyAndAssignmentCarryNothingOfTheirOwn) {
	Sample_object source;
	source.number = 5;
	Sample_object copy(source);
	EXPECT_EQ(copy.number, 5) << "the derived class's own";
	static_cast<zubObject&>(copy) = Sample_object();
	EXPECT_EQ(copy.number, 5);
	EXPECT_EQ(copy.get_type_id(), 1);
	EXPECT_STREQ(copy.get_type_name().char_p(), "Sample_object");
}

TEST(zubObject, TextIsTheRootsName) {
	Sample_object object;
	EXPECT_STREQ(object.to_string().char_p(), "zubObject");
}

} // namespace
