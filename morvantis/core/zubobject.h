// The root of the engine's object classes, and the registry of their types.
#pragma once

#include <morvantis/core/xyltypes.h> // MORVANTIS_API
#include <morvantis/strings/xylconststring.h>
#include <morvantis/strings/xylvarstring.h>

#include <vector>

// One registered type.
struct zubObject_type_definition {
	int type_id;         // its index in the registry
	char type_name[128]; // terminated; what stands behind the terminator has no meaning
};

// An object whose class has a number and a name.
//
// A class with a type has a static `int class_<Name>_type_id_`, which a static initialiser sets
// with genereate_new_type_id(), a static getter for it, and overrides of the two pure operations;
// see xylReference_counted_object, whose own number is 0. Numbers follow the order of static
// initialisation, so they are not the same from build to build.
//
// Threads: types are registered during static initialisation, which is serial. From then on the
// registry may be read by any thread.
class MORVANTIS_API zubObject {
public:
	zubObject() = default;
	zubObject(const zubObject&) {}
	zubObject& operator=(const zubObject&) { return *this; } // does nothing
	virtual ~zubObject() = default;

	virtual int get_type_id() const = 0;
	virtual xylConstString<128> get_type_name() const = 0;
	// The text "zubObject". Allocates it from the library's heap.
	virtual xylVarString to_string();

	// Types registered so far; the library's own is one of them.
	static int get_type_definition_count() { return total_type_count_; }
	// A copy of the record. An index out of range throws std::out_of_range.
	static zubObject_type_definition get_type_definition(int index);

	// Made with the run-time's operator new by the first registration, never destroyed.
	static std::vector<zubObject_type_definition>* type_definitions_;
	static int total_type_count_; // registrations

protected:
	// Registers a type and returns its number: 0, 1, 2, ... in the order of registration.
	//
	// kept: names are not compared; the same one again gives another number. 128 bytes of the
	// string are stored, those behind its terminator, too.
	static int genereate_new_type_id(xylConstString<128> name);
};
