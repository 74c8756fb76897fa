// Sections are keys of the registry below the user's software; each value is written in one step.

#include "platform/settings_store.h"

#include <windows.h>

#include "platform/text.h"

namespace lumiset::platform {
namespace {

const std::string kRoot = "Software\\Vantrel\\";

class Key {
public:
    Key(const std::string& section, REGSAM access, bool create) {
        const std::optional<std::wstring> path = fromUtf8(kRoot + section);
        if (!path || section.empty()) {
            return;
        }
        if (create) {
            m_open = RegCreateKeyExW(HKEY_CURRENT_USER, path->c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                     nullptr, &m_key, nullptr) == ERROR_SUCCESS;
        } else {
            m_open = RegOpenKeyExW(HKEY_CURRENT_USER, path->c_str(), 0, access, &m_key) == ERROR_SUCCESS;
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (m_open) {
            RegCloseKey(m_key);
        }
    }

    explicit operator bool() const { return m_open; }
    [[nodiscard]] HKEY get() const { return m_key; }

private:
    HKEY m_key = nullptr;
    bool m_open = false;
};

std::optional<std::string> valueOf(const Key& key, const std::wstring& name) {
    // It may grow between the two questions.
    for (int attempt = 0; attempt < 4; ++attempt) {
        DWORD type = 0;
        DWORD size = 0;
        if (RegQueryValueExW(key.get(), name.c_str(), nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
            type != REG_SZ) {
            return std::nullopt;
        }
        std::wstring text(size / sizeof(wchar_t) + 1, L'\0');
        size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
        const LSTATUS status =
            RegQueryValueExW(key.get(), name.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size);
        if (status == ERROR_SUCCESS) {
            return toUtf8(std::wstring_view(text).substr(0, text.find(L'\0')));
        }
        if (status != ERROR_MORE_DATA) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<std::string> readSetting(const std::string& section, const std::string& name) {
    const Key key(section, KEY_QUERY_VALUE, false);
    const std::optional<std::wstring> wideName = fromUtf8(name);
    return key && wideName ? valueOf(key, *wideName) : std::nullopt;
}

Settings readSettings(const std::string& section) {
    Settings settings;
    const Key key(section, KEY_QUERY_VALUE, false);
    if (!key) {
        return settings;
    }
    std::wstring name(16384, L'\0');  // the registry's limit
    for (DWORD index = 0;; ++index) {
        auto length = static_cast<DWORD>(name.size());
        if (RegEnumValueW(key.get(), index, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return settings;
        }
        const std::wstring found = name.substr(0, length);
        const std::optional<std::string> narrowName = toUtf8(found);
        std::optional<std::string> value = valueOf(key, found);
        if (narrowName && value) {
            settings.emplace_back(*narrowName, std::move(*value));
        }
    }
}

bool writeSetting(const std::string& section, const std::string& name, const std::string& value) {
    const std::optional<std::wstring> wideName = fromUtf8(name);
    const std::optional<std::wstring> wideValue = fromUtf8(value);
    constexpr wchar_t kEnd = L'\0';  // of a stored text
    if (!wideName || wideName->empty() || !wideValue || wideName->find(kEnd) != std::wstring::npos ||
        wideValue->find(kEnd) != std::wstring::npos) {
        return false;
    }
    const Key key(section, KEY_SET_VALUE, true);
    return key &&
           RegSetValueExW(key.get(), wideName->c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(wideValue->c_str()),
                          static_cast<DWORD>((wideValue->size() + 1) * sizeof(wchar_t))) == ERROR_SUCCESS;
}

bool writeSettings(const std::string& section, const Settings& settings) {
    bool written = true;
    for (const auto& [name, value] : settings) {
        written = writeSetting(section, name, value) && written;
    }
    return written;
}

bool removeSettings(const std::string& section) {
    const std::optional<std::wstring> path = fromUtf8(kRoot + section);
    if (!path || section.empty()) {
        return false;
    }
    const LSTATUS status = RegDeleteTreeW(HKEY_CURRENT_USER, path->c_str());
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
}

std::string storingProblem(const std::string& section) {
    return Key(section, KEY_SET_VALUE, true) ? std::string()
                                             : "HKEY_CURRENT_USER\\" + kRoot + section + " cannot be written to";
}

}  // namespace lumiset::platform
