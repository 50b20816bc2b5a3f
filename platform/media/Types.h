#pragma once
// The streaming layer's basic types and status codes. Times are reference times: signed
// 64-bit counts of 100 ns. The codes keep their DirectShow values, which hosts test.
#include "platform/com/HResult.h"

#include <cstdint>

namespace qx::media {

using REFERENCE_TIME = int64_t;
using LONGLONG = int64_t;

/// Reference-time units in one second.
inline constexpr REFERENCE_TIME kUnitsPerSecond = 10'000'000;

enum PIN_DIRECTION : int32_t { PINDIR_INPUT = 0, PINDIR_OUTPUT = 1 };

enum FILTER_STATE : int32_t { State_Stopped = 0, State_Paused = 1, State_Running = 2 };

struct RECT {
    LONG left = 0;
    LONG top = 0;
    LONG right = 0;
    LONG bottom = 0;

    friend constexpr bool operator==(const RECT&, const RECT&) = default;
};

inline constexpr HRESULT VFW_S_NO_MORE_ITEMS = HRESULT(0x00040103u);
inline constexpr HRESULT VFW_S_NO_STOP_TIME = HRESULT(0x00040270u);
inline constexpr HRESULT VFW_E_ALREADY_CONNECTED = HRESULT(0x80040204u);
inline constexpr HRESULT VFW_E_NO_ACCEPTABLE_TYPES = HRESULT(0x80040207u);
inline constexpr HRESULT VFW_E_NOT_CONNECTED = HRESULT(0x80040209u);
inline constexpr HRESULT VFW_E_NO_ALLOCATOR = HRESULT(0x8004020Au);
inline constexpr HRESULT VFW_E_BADALIGN = HRESULT(0x8004020Eu);
inline constexpr HRESULT VFW_E_ALREADY_COMMITTED = HRESULT(0x8004020Fu);
inline constexpr HRESULT VFW_E_BUFFERS_OUTSTANDING = HRESULT(0x80040210u);
inline constexpr HRESULT VFW_E_NOT_COMMITTED = HRESULT(0x80040211u);
inline constexpr HRESULT VFW_E_SIZENOTSET = HRESULT(0x80040212u);
inline constexpr HRESULT VFW_E_NOT_STOPPED = HRESULT(0x80040224u);
inline constexpr HRESULT VFW_E_WRONG_STATE = HRESULT(0x80040227u);
inline constexpr HRESULT VFW_E_TYPE_NOT_ACCEPTED = HRESULT(0x8004022Au);
inline constexpr HRESULT VFW_E_TIMEOUT = HRESULT(0x8004022Eu);
inline constexpr HRESULT VFW_E_SAMPLE_TIME_NOT_SET = HRESULT(0x80040249u);
inline constexpr HRESULT VFW_E_MEDIA_TIME_NOT_SET = HRESULT(0x80040251u);

}  // namespace qx::media
