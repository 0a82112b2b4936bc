// Debug Interface Access, as far as it is called: the interfaces' order of functions and their
// identifiers. No header of the compiler has them. Functions that nobody calls are only counted.
#pragma once

#include <morvantis/platform/system/windows/include_windows.h>

#include <objbase.h> // IUnknown, IClassFactory

namespace dia {

inline constexpr GUID source_class = {
	0xE6756135, 0x1E65, 0x4D17, {0x85, 0x76, 0x61, 0x07, 0x61, 0x39, 0x8C, 0x3C}};
inline constexpr GUID source_interface = {
	0x79F1BB5F, 0xB66E, 0x48E5, {0xB6, 0xA9, 0x15, 0x45, 0xC3, 0x23, 0xCA, 0x3D}};
inline constexpr GUID class_factory_interface = {
	0x00000001, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};

// The reader's plain entry.
using Get_class_object = HRESULT(STDMETHODCALLTYPE*)(REFCLSID, REFIID, void**);

enum Symbol_tag : DWORD { any_tag = 0, function_tag = 5, public_symbol_tag = 10 };

#define DIA_SLOT(number) virtual HRESULT STDMETHODCALLTYPE slot_##number() = 0

struct Source_file : IUnknown {
	DIA_SLOT(3);
	virtual HRESULT STDMETHODCALLTYPE get_fileName(BSTR* name) = 0;
};

struct Line_number : IUnknown {
	DIA_SLOT(3);
	virtual HRESULT STDMETHODCALLTYPE get_sourceFile(Source_file** file) = 0;
	virtual HRESULT STDMETHODCALLTYPE get_lineNumber(DWORD* number) = 0;
};

struct Line_numbers : IUnknown {
	DIA_SLOT(3);
	DIA_SLOT(4);
	virtual HRESULT STDMETHODCALLTYPE Item(DWORD index, Line_number** line) = 0;
};

struct Symbol : IUnknown {
	DIA_SLOT(3);
	DIA_SLOT(4);
	virtual HRESULT STDMETHODCALLTYPE get_name(BSTR* name) = 0;
	DIA_SLOT(6);
	DIA_SLOT(7);
	DIA_SLOT(8);
	DIA_SLOT(9);
	DIA_SLOT(10);
	DIA_SLOT(11);
	DIA_SLOT(12);
	DIA_SLOT(13);
	DIA_SLOT(14);
	DIA_SLOT(15);
	DIA_SLOT(16);
	virtual HRESULT STDMETHODCALLTYPE get_length(ULONGLONG* length) = 0;
};

struct Session : IUnknown {
	DIA_SLOT(3);
	DIA_SLOT(4);
	DIA_SLOT(5);
	DIA_SLOT(6);
	DIA_SLOT(7);
	DIA_SLOT(8);
	DIA_SLOT(9);
	DIA_SLOT(10);
	DIA_SLOT(11);
	DIA_SLOT(12);
	DIA_SLOT(13);
	virtual HRESULT STDMETHODCALLTYPE findSymbolByRVA(DWORD rva, DWORD tag, Symbol** symbol) = 0;
	DIA_SLOT(15);
	DIA_SLOT(16);
	DIA_SLOT(17);
	DIA_SLOT(18);
	DIA_SLOT(19);
	DIA_SLOT(20);
	DIA_SLOT(21);
	DIA_SLOT(22);
	DIA_SLOT(23);
	DIA_SLOT(24);
	virtual HRESULT STDMETHODCALLTYPE findLinesByRVA(DWORD rva, DWORD length,
	                                                 Line_numbers** lines) = 0;
};

struct Data_source : IUnknown {
	DIA_SLOT(3);
	DIA_SLOT(4);
	virtual HRESULT STDMETHODCALLTYPE loadAndValidateDataFromPdb(const OLECHAR* path, GUID* guid,
	                                                             DWORD signature, DWORD age) = 0;
	DIA_SLOT(6);
	DIA_SLOT(7);
	virtual HRESULT STDMETHODCALLTYPE openSession(Session** session) = 0;
};

#undef DIA_SLOT

} // namespace dia
