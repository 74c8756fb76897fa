#pragma once

namespace lumiset::platform {

inline constexpr const wchar_t* kMonitorPipe = L"\\\\.\\pipe\\vantrelgpumonitor";

}  // namespace lumiset::platform
