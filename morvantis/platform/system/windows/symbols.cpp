#include <morvantis/platform/system/symbols.h>

#include <morvantis/platform/system/windows/include_windows.h>

#include <dbghelp.h>

#include <cstdlib>
#include <cstring>

const char* os::symbol_reader_library() { return "msdia140.dll"; }

void os::set_symbol_options(xylUInt32 options) { SymSetOptions(options); }

void os::set_symbol_search_path(void* process, const char* paths) {
	SymSetSearchPath(process, paths);
}

bool os::start_symbol_engine(void* process, const char* paths) {
	return SymInitialize(process, paths, TRUE) != 0;
}

void os::stop_symbol_engine(void* process) { SymCleanup(process); }

// --- The engine's answers

bool os::engine_module(void* process, xylUInt64 address, Engine_module& answer) {
	IMAGEHLP_MODULE64 module{};
	module.SizeOfStruct = sizeof(module);
	static_assert(sizeof(module) == 1680);
	if (!SymGetModuleInfo64(process, address, &module)) return false;
	answer.base = module.BaseOfImage;
	static_assert(sizeof(answer.image) == sizeof(module.ImageName));
	static_assert(sizeof(answer.loaded_image) == sizeof(module.LoadedImageName));
	std::memcpy(answer.image, module.ImageName, sizeof(answer.image));
	std::memcpy(answer.loaded_image, module.LoadedImageName, sizeof(answer.loaded_image));
	return true;
}

void* os::allocate_engine_record() {
	auto* record = static_cast<IMAGEHLP_SYMBOL64*>(std::calloc(1, engine_record_size));
	if (!record) return nullptr;
	record->SizeOfStruct = sizeof(*record);
	record->MaxNameLength = engine_text_size;
	static_assert(sizeof(*record) + engine_text_size == engine_record_size);
	return record;
}

bool os::engine_name(void* process, xylUInt64 address, void* record, Engine_name& answer) {
	auto* symbol = static_cast<IMAGEHLP_SYMBOL64*>(record);
	DWORD64 distance = 0;
	if (!SymGetSymFromAddr64(process, address, &distance, symbol)) return false;
	answer.decorated = symbol->Name;
	answer.plain[0] = answer.complete[0] = 0;
	UnDecorateSymbolName(symbol->Name, answer.plain, sizeof(answer.plain), UNDNAME_NAME_ONLY);
	UnDecorateSymbolName(symbol->Name, answer.complete, sizeof(answer.complete), UNDNAME_COMPLETE);
	static_assert(UNDNAME_NAME_ONLY == 0x1000 && UNDNAME_COMPLETE == 0);
	return true;
}

bool os::engine_line(void* process, xylUInt64 address, Engine_line& answer) {
	IMAGEHLP_LINE64 line{};
	line.SizeOfStruct = sizeof(line);
	static_assert(sizeof(line) == 40);
	DWORD distance = 0;
	if (!SymGetLineFromAddr64(process, address, &distance, &line)) return false;
	answer = {line.FileName, line.LineNumber};
	return true;
}
