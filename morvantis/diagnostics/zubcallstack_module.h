// What is known of one loaded image.
#pragma once

#include <morvantis/core/xylguid.h>
#include <morvantis/strings/xylvarstring.h>

// An image, and the identity that its symbol file must have to belong to it. Copying copies every
// field.
struct MORVANTIS_API zubCallstack_module {
	xylVarString name;             // the image's file name
	xylVarString path;             // the image's full path, or what it was loaded by
	bool is_stripped = false;      // the image's header says that its symbols were taken out
	xylUInt32 time_date_stamp = 0; // of the image's header; 0 where images have none
	size_t base_address = 0;       // where the image is loaded
	xylUInt32 image_size = 0;      // bytes of memory from the base on
	xylVarString extra_path;       // the library leaves it empty
	xylVarString pdb_name;         // the symbol file's name as the image records it
	xylGuid_type pdb_guid = {};    // of the symbol file
	xylUInt32 pdb_signature = 0;   // 0x53445352 ("RSDS") once the identity is known
	xylUInt32 pdb_age = 0;         // of the symbol file
};
