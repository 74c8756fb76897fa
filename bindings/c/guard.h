#pragma once

#include <stdexcept>
#include <string>

#include "bindings/c/lumiset.h"

namespace lumiset::bindings {

/// An argument of a C call is none; the text is a whole sentence.
class ArgumentError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Throws `ArgumentError` for a null pointer; `what` names it: "a look".
template <class Type>
Type& needed(Type* pointer, const char* what) {
    if (pointer == nullptr) {
        throw ArgumentError(std::string("The call needs ") + what + ", not a null pointer.");
    }
    return *pointer;
}

inline const char* neededText(const char* text, const char* what) {
    return &needed(text, what);
}

/// Throws `ArgumentError` unless the struct's size is what this version of the header knows.
template <class Struct>
Struct& neededStruct(Struct* pointer, const char* what) {
    if (needed(pointer, what).size != sizeof(Struct)) {
        throw ArgumentError(std::string("The size in ") + what + " is to be " + std::to_string(sizeof(Struct)) +
                            ", not " + std::to_string(pointer->size) + '.');
    }
    return *pointer;
}

/// What the exception under way means to a caller in C; its sentence becomes the thread's `lumiset_error`.
lumiset_status statusOfException() noexcept;

/// Does `work`. No exception goes beyond here.
template <class Work>
lumiset_status guarded(const Work& work) noexcept {
    try {
        work();
        return LUMISET_OK;
    } catch (...) {
        return statusOfException();
    }
}

/// What `work` answers, or null.
template <class Work>
auto guardedPointer(const Work& work) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (...) {
        statusOfException();
        return nullptr;
    }
}

}  // namespace lumiset::bindings
