// Symbol files by identity: the search of the debug help library, and Debug Interface Access.

#include <morvantis/platform/system/pdb_identity.h>
#include <morvantis/platform/system/symbols.h>

#include <morvantis/platform/system/windows/dia.h>
#include <morvantis/platform/system/windows/include_windows.h>

#include <dbghelp.h>
#include <oleauto.h> // SysFreeString

#include <cstring>
#include <cwchar>
#include <initializer_list>

namespace {

// --- The search

constexpr size_t paths_size = 16384; // of a whole search path; it holds a handful of folders

// Under this value the search is asked, as a process of its own.
HANDLE search_process() { return reinterpret_cast<HANDLE>(size_t{1}); }

// Takes folders out of a search path that are longer than folders can be. Wine 8.0 puts the path of
// each file together in MAX_PATH characters and copies a longer folder past their end. An element
// of servers is no folder and may be longer.
void leave_out_long_folders(wchar_t* paths) {
	constexpr size_t longest_folder = MAX_PATH - 13; // CreateDirectory keeps room for a short name
	wchar_t* end = paths;
	for (const wchar_t* element = paths; *element;) {
		const size_t length = std::wcscspn(element, L";");
		const size_t whole = length + (element[length] != 0);
		if (length <= longest_folder || std::wcsncmp(element, L"SRV*", 4) == 0) {
			std::wmemmove(end, element, whole);
			end += whole;
		}
		element += whole;
	}
	*end = 0;
}

bool read_file(void* file, xylUInt64 place, void* bytes, size_t size) {
	LARGE_INTEGER position;
	position.QuadPart = static_cast<LONGLONG>(place);
	DWORD count = 0;
	return SetFilePointerEx(file, position, nullptr, FILE_BEGIN) &&
	       ReadFile(file, bytes, static_cast<DWORD>(size), &count, nullptr) && count == size;
}

bool is_symbol_file_of(const wchar_t* path, const os::Symbol_file_identity& identity) {
	const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
	                                OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
	if (file == INVALID_HANDLE_VALUE) return false;
	os::Pdb_identity found;
	const bool is_one = os::read_pdb_identity({read_file, file}, found);
	CloseHandle(file);
	return is_one && std::memcmp(found.guid, identity.guid, sizeof(found.guid)) == 0 &&
	       (found.age == identity.age || found.build_age == identity.age);
}

// The search asks for each candidate, not all of which exist: TRUE goes on, FALSE takes it.
BOOL CALLBACK passes_over(PCWSTR path, PVOID identity) {
	return !is_symbol_file_of(path, *static_cast<const os::Symbol_file_identity*>(identity));
}

} // namespace

bool os::find_symbol_file(const char* paths, const Symbol_file_identity& identity,
                          char (&found)[symbol_text_size]) {
	wchar_t wide_paths[paths_size], name[symbol_text_size];
	wchar_t wide_found[symbol_text_size] = {};
	if (!identity.name[0]) return false; // an image without identity
	if (!MultiByteToWideChar(CP_ACP, 0, paths, -1, wide_paths, paths_size) ||
	    !MultiByteToWideChar(CP_UTF8, 0, identity.name, -1, name, symbol_text_size)) {
		return false;
	}
	leave_out_long_folders(wide_paths);
	GUID guid;
	std::memcpy(&guid, identity.guid, sizeof(guid));
	auto* const context = const_cast<Symbol_file_identity*>(&identity);
	const auto search = [&] {
		// mingw-w64 declares the wide result as narrow.
		return SymFindFileInPathW(search_process(), wide_paths, name, &guid, identity.age, 0,
		                          SSRVOPT_GUIDPTR, reinterpret_cast<LPSTR>(wide_found), passes_over,
		                          context) != 0;
	};
	static_assert(SSRVOPT_GUIDPTR == 8);
	if (!search()) {
		// Some systems know a process only once it has been announced.
		if (GetLastError() != ERROR_INVALID_HANDLE) return false;
		if (!SymInitializeW(search_process(), nullptr, FALSE) || !search()) return false;
	}
	return WideCharToMultiByte(CP_UTF8, 0, wide_found, -1, found, symbol_text_size, nullptr,
	                           nullptr) != 0;
}

// --- The reader

namespace {

// Owns one reference.
template <typename T> class Held {
public:
	Held() = default;
	~Held() {
		if (object_) object_->Release();
	}
	Held(const Held&) = delete;
	Held& operator=(const Held&) = delete;
	T* operator->() const { return object_; }
	explicit operator bool() const { return object_ != nullptr; }
	// For a call that hands out a reference; lets go of the one held.
	T** receive() {
		if (object_) object_->Release();
		object_ = nullptr;
		return &object_;
	}

private:
	T* object_ = nullptr;
};

// Converts a text to UTF-8 and ends it. One that doesn't fit leaves `out` as it is.
//
// Result  false when there is no text.
bool take_text(BSTR text, char (&out)[os::symbol_text_size]) {
	if (!text) return false;
	const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
	if (size <= static_cast<int>(sizeof(out))) {
		WideCharToMultiByte(CP_UTF8, 0, text, -1, out, size, nullptr, nullptr);
	}
	SysFreeString(text);
	return true;
}

bool make_source(void* reader, Held<dia::Data_source>& source) {
	const auto get_class_object = reinterpret_cast<dia::Get_class_object>(reader);
	Held<IClassFactory> factory;
	if (get_class_object(dia::source_class, dia::class_factory_interface,
	                     reinterpret_cast<void**>(factory.receive())) != S_OK ||
	    !factory) {
		return false;
	}
	return factory->CreateInstance(nullptr, dia::source_interface,
	                               reinterpret_cast<void**>(source.receive())) == S_OK &&
	       source;
}

// The function at a place, or what else has a name there.
bool find_symbol(Held<dia::Session>& session, xylUInt32 offset, Held<dia::Symbol>& symbol) {
	for (const DWORD tag : {dia::function_tag, dia::any_tag, dia::public_symbol_tag}) {
		if (session->findSymbolByRVA(offset, tag, symbol.receive()) == S_OK) return !!symbol;
	}
	return false;
}

// Each answer may be missing; what was found until then stays.
void find_line(Held<dia::Session>& session, Held<dia::Symbol>& symbol, xylUInt32 offset,
               os::Symbol_answer& answer) {
	ULONGLONG length = 4;
	if (symbol->get_length(&length) != S_OK || length == 0) return;
	Held<dia::Line_numbers> lines;
	if (session->findLinesByRVA(offset, static_cast<DWORD>(length), lines.receive()) != S_OK ||
	    !lines) {
		return;
	}
	Held<dia::Line_number> line;
	if (lines->Item(0, line.receive()) != S_OK || !line) return;
	DWORD number = 0;
	if (line->get_lineNumber(&number) != S_OK) return;
	answer.has_line = true;
	answer.line = number;
	Held<dia::Source_file> file;
	if (line->get_sourceFile(file.receive()) != S_OK || !file) return;
	BSTR name = nullptr;
	if (file->get_fileName(&name) != S_OK) return;
	std::memcpy(answer.source, answer.function, sizeof(answer.source));
	answer.has_source = take_text(name, answer.source);
}

} // namespace

bool os::look_up_symbol(void* reader, const char* file, const Symbol_file_identity& identity,
                        xylUInt32 offset, Symbol_answer& answer) {
	Held<dia::Data_source> source;
	if (!make_source(reader, source)) return false;
	wchar_t path[symbol_text_size];
	if (!MultiByteToWideChar(CP_UTF8, 0, file, -1, path, symbol_text_size)) return false;
	GUID guid;
	std::memcpy(&guid, identity.guid, sizeof(guid));
	if (source->loadAndValidateDataFromPdb(path, &guid, identity.signature, identity.age) != S_OK) {
		return false;
	}
	Held<dia::Session> session;
	if (source->openSession(session.receive()) != S_OK || !session) return true;
	Held<dia::Symbol> symbol;
	if (!find_symbol(session, offset, symbol)) return true;
	BSTR name = nullptr;
	if (symbol->get_name(&name) == S_OK) answer.has_function = take_text(name, answer.function);
	find_line(session, symbol, offset, answer);
	return true;
}
