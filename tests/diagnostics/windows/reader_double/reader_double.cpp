// A reader of symbol files that answers from a script. Its objects are tables of functions by
// number, so that the numbers themselves are tested, and not one declaration against itself.

#include "reader_double.h"

#include <oleauto.h>

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace {

Reader_script script;

bool is_set(unsigned int bits, Reader_step step) { return (bits >> step & 1) != 0; }

constexpr unsigned int table_size = 64;
using Slot = void*;
using Table = Slot[table_size];

struct Object {
	const Slot* table;
	ULONG references;
};

HRESULT other_slot() {
	script.other_slots = true;
	return E_NOTIMPL;
}

HRESULT query_interface(Object*, const GUID*, void** result) {
	*result = nullptr;
	return E_NOINTERFACE;
}

ULONG add_reference(Object* object) { return ++object->references; }

ULONG release(Object* object) {
	const ULONG left = --object->references;
	if (left == 0) {
		delete object;
		--script.live_objects;
	}
	return left;
}

// A table with the three functions of every interface, and others by their numbers.
struct Numbered {
	unsigned int number;
	Slot function;
};
template <typename Function> Slot slot(Function* function) {
	return reinterpret_cast<Slot>(function);
}
struct Filled_table {
	Filled_table(std::initializer_list<Numbered> functions) {
		std::fill(std::begin(slots), std::end(slots), slot(other_slot));
		slots[0] = slot(query_interface);
		slots[1] = slot(add_reference);
		slots[2] = slot(release);
		for (const Numbered& function : functions) slots[function.number] = function.function;
	}
	Table slots;
};

// What a step that hands out an object does.
HRESULT hand_out(Reader_step step, const Filled_table& table, void** result) {
	const bool fails = is_set(script.failing, step) || is_set(script.leaking, step);
	if (!is_set(script.failing, step) && !is_set(script.missing, step)) {
		*result = new Object{table.slots, 1};
		script.most_objects = std::max(script.most_objects, ++script.live_objects);
	}
	return fails ? script.failure : S_OK;
}

HRESULT hand_out_text(Reader_step step, const wchar_t* text, BSTR* result) {
	if (is_set(script.failing, step)) return script.failure;
	*result = is_set(script.missing, step) ? nullptr : SysAllocString(text);
	return S_OK;
}

// --- From the innermost object out

HRESULT get_source_name(Object*, BSTR* name) {
	return hand_out_text(step_source_name, script.source, name);
}
const Filled_table source_table{{4, slot(get_source_name)}};

HRESULT get_source(Object*, void** source) { return hand_out(step_source, source_table, source); }
HRESULT get_line_number(Object*, DWORD* number) {
	if (is_set(script.failing, step_line_number)) return script.failure;
	*number = script.line;
	return S_OK;
}
const Filled_table line_table{{4, slot(get_source)}, {5, slot(get_line_number)}};

HRESULT get_item(Object*, DWORD index, void** line) {
	script.line_index = index;
	return hand_out(step_line, line_table, line);
}
const Filled_table lines_table{{5, slot(get_item)}};

HRESULT get_name(Object*, BSTR* name) { return hand_out_text(step_name, script.function, name); }
HRESULT get_length(Object*, ULONGLONG* length) {
	script.length_before = *length;
	if (is_set(script.failing, step_length)) return script.failure;
	if (!script.keeps_length) *length = script.length;
	return S_OK;
}
const Filled_table symbol_table{{5, slot(get_name)}, {17, slot(get_length)}};

HRESULT find_symbol(Object*, DWORD place, DWORD tag, void** symbol) {
	script.symbol_place = place;
	if (script.tag_count < std::size(script.tags)) script.tags[script.tag_count++] = tag;
	const Reader_step step = tag == 5   ? step_function
	                         : tag == 0 ? step_any_symbol
	                                    : step_public_symbol;
	return hand_out(step, symbol_table, symbol);
}
HRESULT find_lines(Object*, DWORD place, DWORD length, void** lines) {
	script.line_place = place;
	script.line_length = length;
	return hand_out(step_lines, lines_table, lines);
}
const Filled_table session_table{{14, slot(find_symbol)}, {25, slot(find_lines)}};

HRESULT load(Object*, const wchar_t* path, GUID* guid, DWORD signature, DWORD age) {
	++script.loads;
	std::wcsncpy(script.path, path, std::size(script.path) - 1);
	script.guid = *guid;
	script.signature = signature;
	script.age = age;
	return is_set(script.failing, step_load) ? script.failure : S_OK;
}
HRESULT open_session(Object*, void** session) {
	return hand_out(step_session, session_table, session);
}
const Filled_table data_source_table{{5, slot(load)}, {8, slot(open_session)}};

bool is_guid(const GUID* guid, std::wstring_view text) {
	wchar_t own[64];
	StringFromGUID2(*guid, own, static_cast<int>(std::size(own)));
	return text == own;
}

HRESULT create_instance(Object*, void* outer, const GUID* type, void** source) {
	if (outer || !is_guid(type, L"{79F1BB5F-B66E-48E5-B6A9-1545C323CA3D}")) {
		script.other_identifiers = true;
		return E_NOINTERFACE;
	}
	return hand_out(step_instance, data_source_table, source);
}
const Filled_table factory_table{{3, slot(create_instance)}};

} // namespace

STDAPI DllGetClassObject(REFCLSID id, REFIID type, void** factory) {
	if (!is_guid(&id, L"{E6756135-1E65-4D17-8576-610761398C3C}") ||
	    !is_guid(&type, L"{00000001-0000-0000-C000-000000000046}")) {
		script.other_identifiers = true;
		return CLASS_E_CLASSNOTAVAILABLE;
	}
	return hand_out(step_factory, factory_table, factory);
}

extern "C" Reader_script* reader_script() { return &script; }

// Exported by a name as another compiler decorates it.
extern "C" int twice_as_exported(int number) { return 2 * number; }
