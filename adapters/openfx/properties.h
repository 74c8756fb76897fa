#pragma once

#include <optional>
#include <string>

#include "adapters/openfx/abi/suites.h"

namespace lumiset::openfx {

/// One of a host's property sets. What a host does not know it refuses: questions are then answered by the fallback,
/// and statements say whether they were taken. May be made of a null handle, which knows nothing.
class Properties {
public:
    Properties(const PropertySuite& suite, Props handle) : m_suite(&suite), m_handle(handle) {}

    [[nodiscard]] Props handle() const { return m_handle; }

    [[nodiscard]] int getInt(const char* name, int fallback, int index = 0) const;
    /// The fallback for what is not finite too.
    [[nodiscard]] double getDouble(const char* name, double fallback, int index = 0) const;
    /// A copy: a host's text lives until its next call.
    [[nodiscard]] std::string getString(const char* name, const char* fallback = "", int index = 0) const;
    [[nodiscard]] void* getPointer(const char* name) const;
    /// Four numbers at once; nothing when one is missing.
    [[nodiscard]] std::optional<RectI> getRectI(const char* name) const;
    [[nodiscard]] std::optional<PointD> getPointD(const char* name) const;

    // Return whether the host took it.
    // NOLINTBEGIN(modernize-use-nodiscard)
    bool set(const char* name, int value, int index = 0) const;
    bool set(const char* name, double value, int index = 0) const;
    bool set(const char* name, const char* value, int index = 0) const;
    bool set(const char* name, void* value) const;
    // NOLINTEND(modernize-use-nodiscard)

private:
    const PropertySuite* m_suite;
    Props m_handle;
};

}  // namespace lumiset::openfx
