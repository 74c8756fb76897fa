#include "tests/openfx/property_set.h"

#include <array>
#include <cstring>
#include <sstream>

#include "tests/openfx/property_table.h"

namespace lumiset::openfx::test {
namespace {

struct Known {
    char type = 'i';
    int dimension = 1;  ///< 0: any
};

/// Type and dimension of a kind's own value.
Known valueOf(const std::string& kind) {
    static const std::map<std::string, Known> kinds{{"Double", {'d', 1}}, {"Double2D", {'d', 2}},
                                                    {"RGB", {'d', 3}},    {"Boolean", {'i', 1}},
                                                    {"Choice", {'i', 1}}, {"String", {'s', 1}}};
    const auto found = kinds.find(kind);
    return found != kinds.end() ? found->second : Known{'?', 0};
}

bool belongs(const std::string& tableObject, const std::string& object) {
    if (tableObject == object) {
        return true;
    }
    if (!object.starts_with("param:")) {
        // An instance has what its descriptor has; so do clips.
        return (object == "instance" && tableObject == "effect") || (object == "clip" && tableObject == "clipdesc");
    }
    const std::string kind = object.substr(6);
    const bool isNumber = valueOf(kind).type == 'd';
    return tableObject == "param" || tableObject == kind || (tableObject == "value" && valueOf(kind).type != '?') ||
           (tableObject == "number" && isNumber) || (tableObject == "double" && isNumber && kind != "RGB");
}

bool find(const std::string& object, const std::string& name, Known& known) {
    std::istringstream lines(kPropertyTable);
    std::string line;
    while (std::getline(lines, line)) {
        std::istringstream words(line);
        std::string of;
        std::string type;
        std::string each;
        words >> of >> type;
        while (words >> each) {
            if (each == name && belongs(of, object)) {
                known =
                    type == "default" ? valueOf(object.substr(6)) : Known{type[0], type[1] == 'N' ? 0 : type[1] - '0'};
                return true;
            }
        }
    }
    return false;
}

/// The table is long, and asked for every access.
const Known* lookUp(const std::string& object, const std::string& name) {
    static std::mutex mutex;
    static std::map<std::pair<std::string, std::string>, Known> cache;
    const std::lock_guard lock(mutex);
    const auto [entry, isNew] = cache.try_emplace({object, name});
    if (isNew && !find(object, name, entry->second)) {
        entry->second.type = '?';
    }
    return entry->second.type != '?' ? &entry->second : nullptr;
}

char typeOf(const Value& value) {
    return "?idsp"[value.index()];
}

template <class T>
Status setOne(Props set, const char* name, int index, T value) {
    return PropertySet::of(set).set(name, index, value);
}
Status setText(Props set, const char* name, int index, const char* value) {
    return PropertySet::of(set).set(name, index, std::string(value));
}
template <class T>
Status getOne(Props set, const char* name, int index, T* out) {
    Value value;
    const Status status = PropertySet::of(set).ask(name, index, value, T{});
    if (status == kOk) {
        *out = std::get<T>(value);
    }
    return status;
}
Status getText(Props set, const char* name, int index, char** out) {
    // A text lives until the next call: the one before is overwritten.
    thread_local std::array<std::array<char, 4096>, 2> buffers{};
    thread_local std::size_t next = 0;
    std::memset(buffers[1 - next].data(), '#', 4095);
    Value value;
    const Status status = PropertySet::of(set).ask(name, index, value, std::string());
    if (status == kOk) {
        std::snprintf(buffers[next].data(), 4096, "%s", std::get<std::string>(value).c_str());
        *out = buffers[next].data();
        next = 1 - next;
    }
    return status;
}

}  // namespace

void Complaints::add(const std::string& complaint) {
    const std::lock_guard lock(m_mutex);
    m_all.insert(complaint);
}

std::string Complaints::take() {
    const std::lock_guard lock(m_mutex);
    std::string text;
    for (const std::string& each : m_all) {
        text += each + "\n";
    }
    m_all.clear();
    return text;
}

Complaints& complaints() {
    static Complaints all;
    return all;
}

void PropertySet::put(const std::string& name, std::vector<Value> values) {
    const Known* known = lookUp(m_object, name);
    if (known == nullptr || (known->dimension > 0 && known->dimension != static_cast<int>(values.size()))) {
        complaints().add("the test's own host sets " + name + " of " + m_object + " wrongly");
    }
    m_values[name] = std::move(values);
}

std::size_t PropertySet::count(const std::string& name) const {
    const auto found = m_values.find(name);
    return found != m_values.end() ? found->second.size() : 0;
}

bool PropertySet::allows(const char* name, int index, const Value& value, bool setting) const {
    const Known* known = lookUp(m_object, name);
    const std::string what = std::string(setting ? "sets " : "asks for ") + name + " of " + m_object;
    if (known == nullptr) {
        complaints().add(what + ", which has none");
    } else if (known->type != typeOf(value)) {
        complaints().add(what + " with another type");
    } else if (index < 0 || (known->dimension > 0 && index >= known->dimension)) {
        complaints().add(what + " beyond its dimension");
    } else {
        return true;
    }
    return false;
}

Status PropertySet::set(const char* name, int index, const Value& value) {
    if (refused.contains(name)) {
        return kErrUnknown;
    }
    if (!allows(name, index, value, true)) {
        return kErrUnknown;
    }
    std::vector<Value>& values = m_values[name];
    const auto place = static_cast<std::size_t>(index);
    if (place > values.size()) {
        if (lookUp(m_object, name)->dimension == 0) {
            complaints().add(std::string("leaves a gap in ") + name);
            return kErrBadIndex;
        }
    }
    if (place >= values.size()) {
        values.resize(place + 1);
    }
    values[place] = value;
    return kOk;
}

Status PropertySet::ask(const char* name, int index, Value& value, const Value& sample) const {
    if (!allows(name, index, sample, false)) {
        return kErrUnknown;
    }
    const auto found = m_values.find(name);
    if (found == m_values.end()) {
        return kErrUnknown;
    }
    if (static_cast<std::size_t>(index) >= found->second.size()) {
        return kErrBadIndex;
    }
    value = found->second[static_cast<std::size_t>(index)];
    return typeOf(value) == typeOf(sample) ? kOk : kErrValue;
}

const PropertySuite& PropertySet::suite() {
    static const PropertySuite functions = [] {
        PropertySuite all{};
        all.setPointer = &setOne<void*>;
        all.setString = &setText;
        all.setDouble = &setOne<double>;
        all.setInt = &setOne<int>;
        all.getPointer = &getOne<void*>;
        all.getString = &getText;
        all.getDouble = &getOne<double>;
        all.getInt = &getOne<int>;
        return all;
    }();
    return functions;
}

}  // namespace lumiset::openfx::test
