#pragma once
// Status codes and the Windows integer types that reach callers. Hosts test these exact
// numbers, so they keep their Windows values.
#include <cstdint>

namespace qx {

using HRESULT = int32_t;
using LONG = int32_t;  // Windows long is 32-bit
using ULONG = uint32_t;
using DWORD = uint32_t;
using UINT = uint32_t;
using BYTE = uint8_t;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = HRESULT(0x80004001u);
inline constexpr HRESULT E_NOINTERFACE = HRESULT(0x80004002u);
inline constexpr HRESULT E_POINTER = HRESULT(0x80004003u);
inline constexpr HRESULT E_FAIL = HRESULT(0x80004005u);
inline constexpr HRESULT E_UNEXPECTED = HRESULT(0x8000FFFFu);
inline constexpr HRESULT E_OUTOFMEMORY = HRESULT(0x8007000Eu);
inline constexpr HRESULT E_INVALIDARG = HRESULT(0x80070057u);
inline constexpr HRESULT CLASS_E_NOAGGREGATION = HRESULT(0x80040110u);
inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = HRESULT(0x80040111u);
inline constexpr HRESULT REGDB_E_CLASSNOTREG = HRESULT(0x80040154u);
/// The registry could not be read, written, or held a value that is no registry text.
inline constexpr HRESULT REGDB_E_READREGDB = HRESULT(0x80040150u);
inline constexpr HRESULT REGDB_E_WRITEREGDB = HRESULT(0x80040151u);
inline constexpr HRESULT REGDB_E_INVALIDVALUE = HRESULT(0x80040153u);
/// A ProgID that names no class.
inline constexpr HRESULT CO_E_CLASSSTRING = HRESULT(0x800401F3u);
/// The server of a registered class could not be loaded, or lacks its entry point.
inline constexpr HRESULT CO_E_DLLNOTFOUND = HRESULT(0x800401F8u);
inline constexpr HRESULT CO_E_ERRORINDLL = HRESULT(0x800401F9u);
/// A file that does not exist (ERROR_FILE_NOT_FOUND as an HRESULT).
inline constexpr HRESULT HRESULT_FILE_NOT_FOUND = HRESULT(0x80070002u);
/// The transform base's "not set up" code: Execute before inputs and output exist.
inline constexpr HRESULT DXTERR_UNINITIALIZED = HRESULT(0x887A0001u);

constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
constexpr bool FAILED(HRESULT hr) { return hr < 0; }

}  // namespace qx
