#include "adapters/openfx/properties.h"

#include <cmath>

namespace lumiset::openfx {

int Properties::getInt(const char* name, int fallback, int index) const {
    int value = fallback;
    return m_handle != nullptr && m_suite->getInt(m_handle, name, index, &value) == kOk ? value : fallback;
}

double Properties::getDouble(const char* name, double fallback, int index) const {
    double value = fallback;
    const bool known = m_handle != nullptr && m_suite->getDouble(m_handle, name, index, &value) == kOk;
    return known && std::isfinite(value) ? value : fallback;
}

std::string Properties::getString(const char* name, const char* fallback, int index) const {
    char* value = nullptr;
    const bool known = m_handle != nullptr && m_suite->getString(m_handle, name, index, &value) == kOk;
    return known && value != nullptr ? value : fallback;
}

void* Properties::getPointer(const char* name) const {
    void* value = nullptr;
    return m_handle != nullptr && m_suite->getPointer(m_handle, name, 0, &value) == kOk ? value : nullptr;
}

std::optional<RectI> Properties::getRectI(const char* name) const {
    int values[4] = {};
    for (int i = 0; i < 4; ++i) {
        if (m_handle == nullptr || m_suite->getInt(m_handle, name, i, &values[i]) != kOk) {
            return std::nullopt;
        }
    }
    return RectI{values[0], values[1], values[2], values[3]};
}

std::optional<PointD> Properties::getPointD(const char* name) const {
    double values[2] = {};
    for (int i = 0; i < 2; ++i) {
        if (m_handle == nullptr || m_suite->getDouble(m_handle, name, i, &values[i]) != kOk ||
            !std::isfinite(values[i])) {
            return std::nullopt;
        }
    }
    return PointD{values[0], values[1]};
}

bool Properties::set(const char* name, int value, int index) const {
    return m_suite->setInt(m_handle, name, index, value) == kOk;
}

bool Properties::set(const char* name, double value, int index) const {
    return m_suite->setDouble(m_handle, name, index, value) == kOk;
}

bool Properties::set(const char* name, const char* value, int index) const {
    return m_suite->setString(m_handle, name, index, value) == kOk;
}

bool Properties::set(const char* name, void* value) const {
    return m_suite->setPointer(m_handle, name, 0, value) == kOk;
}

}  // namespace lumiset::openfx
