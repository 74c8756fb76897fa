#include "platform/child_process.h"

#include <windows.h>

#include <cstdio>
#include <stdexcept>
#include <system_error>

#include "platform/program.h"
#include "platform/text.h"
#include "platform/win32/handle.h"

namespace lumiset::platform {
namespace {

constexpr DWORD kPollMilliseconds = 10;

[[noreturn]] void failNow(const char* what) {
    throw std::runtime_error(what + std::system_category().message(static_cast<int>(GetLastError())));
}

std::wstring quoted(const std::string& word) {
    return L'"' + fromUtf8(word).value_or(L"") + L'"';
}

/// Appends what lies in the pipe; false once the writers are gone.
bool readSome(HANDLE pipe, std::string& text) {
    DWORD there = 0;
    if (PeekNamedPipe(pipe, nullptr, 0, nullptr, &there, nullptr) == 0) {
        return false;
    }
    char buffer[4096];
    while (there > 0) {
        DWORD got = 0;
        if (ReadFile(pipe, buffer, there < sizeof buffer ? there : sizeof buffer, &got, nullptr) == 0) {
            return false;
        }
        text.append(buffer, got);
        there -= got;
    }
    return true;
}

/// What ended a program with this status; empty where it ended by itself. Faults have the highest bits set.
std::string crashOf(DWORD status) {
    constexpr DWORD kFault = 0xC0000000;
    switch (status) {
        case EXCEPTION_ACCESS_VIOLATION:
            return "Access violation";
        case EXCEPTION_STACK_OVERFLOW:
            return "Stack overflow";
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
            return "Division by zero";
        default:
            break;
    }
    if ((status & kFault) != kFault) {
        return {};
    }
    char code[32];
    std::snprintf(code, sizeof code, "Fault 0x%08lX", static_cast<unsigned long>(status));
    return code;
}

LONG WINAPI endWithItsCode(EXCEPTION_POINTERS* /*fault*/) {
    return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

// The pipe is looked into from time to time: reading from it would wait for a child that hangs.
ChildEnd runProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                    std::chrono::seconds limit) {
    std::wstring line = L'"' + program.wstring() + L'"';
    for (const std::string& argument : arguments) {
        line += L' ' + quoted(argument);
    }
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE ends[2];
    if (CreatePipe(&ends[0], &ends[1], &inherited, 0) == 0) {
        failNow("No pipe to a program: ");
    }
    const Handle reading(ends[0]);
    Handle writing(ends[1]);
    SetHandleInformation(reading.get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    startup.hStdOutput = writing.get();
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION started{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started) ==
        0) {
        failNow("A program does not start: ");
    }
    const Handle process(started.hProcess);
    CloseHandle(started.hThread);
    writing.close();

    ChildEnd end;
    const auto last = std::chrono::steady_clock::now() + limit;
    while (WaitForSingleObject(process.get(), kPollMilliseconds) == WAIT_TIMEOUT) {
        readSome(reading.get(), end.output);
        if (std::chrono::steady_clock::now() >= last) {
            end.timedOut = true;
            TerminateProcess(process.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
        }
    }
    readSome(reading.get(), end.output);
    DWORD status = 0;
    GetExitCodeProcess(process.get(), &status);
    if (!end.timedOut) {
        end.crash = crashOf(status);
    }
    end.status = end.crash.empty() ? static_cast<int>(status) : -1;
    return end;
}

ChildEnd runThisProgram(const std::vector<std::string>& arguments, std::chrono::seconds limit) {
    return runProgram(thisProgram(), arguments, limit);
}

void crashQuietly() {
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    SetUnhandledExceptionFilter(endWithItsCode);
}

}  // namespace lumiset::platform
