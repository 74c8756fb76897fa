#pragma once

// An OpenGL that only writes down what is asked of it. It takes the place of the platform layer's look-up when a test
// links fake_gl.cpp.

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace lumiset::test {

struct FakeGL {
    std::vector<std::string> calls;                       ///< in order, host and OpenGL alike: "Vertex3f -5 -5 -1e-05"
    std::string extensions;                               ///< what glGetString answers
    bool hasContext = true;                               ///< else glGetString answers null
    std::set<std::string> missing;                        ///< names that are not found
    std::vector<std::string> lookedUp;                    ///< extension entry points that were asked for
    std::function<void(const std::string& call)> onCall;  ///< what else a call does

    template <class... Values>
    void note(std::string text, Values... values) {
        ((text += ' ' + format(values)), ...);
        calls.push_back(text);
        if (onCall) {
            onCall(text);
        }
    }
    [[nodiscard]] static std::string format(double value);
    [[nodiscard]] static std::string format(const char* value) { return value; }
    [[nodiscard]] static std::string format(const std::string& value) { return value; }
};

/// The one of this process. Tests begin with a new one.
FakeGL& fakeGL();
void resetFakeGL();

/// The extension string of a driver that has everything.
std::string everyExtension();

}  // namespace lumiset::test
