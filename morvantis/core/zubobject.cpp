#include <morvantis/core/zubobject.h>

#include <morvantis/core/throw_out_of_range.h>

#include <cstring>

namespace {

constexpr char out_of_range_text[] = "invalid vector<T> subscript";

} // namespace

std::vector<zubObject_type_definition>* zubObject::type_definitions_ = nullptr;
int zubObject::total_type_count_ = 0;

xylVarString zubObject::to_string() { return "zubObject"; }

zubObject_type_definition zubObject::get_type_definition(int index) {
	// A negative index is a large one. The text is the same with every C++ library.
	const size_t place = static_cast<size_t>(index);
	if (place >= type_definitions_->size()) throw_out_of_range(out_of_range_text);
	return (*type_definitions_)[place];
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): hosts are compiled against the copy
int zubObject::genereate_new_type_id(xylConstString<128> name) {
	if (!type_definitions_) type_definitions_ = new std::vector<zubObject_type_definition>;
	zubObject_type_definition definition;
	definition.type_id = total_type_count_++;
	std::memcpy(definition.type_name, name.char_p(), sizeof(definition.type_name));
	type_definitions_->push_back(definition);
	return definition.type_id;
}
