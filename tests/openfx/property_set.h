#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "adapters/openfx/abi/suites.h"

namespace lumiset::openfx::test {

/// What plug-ins did that no host allows. Any thread may add to it.
class Complaints {
public:
    void add(const std::string& complaint);
    /// All of them, once.
    [[nodiscard]] std::string take();

private:
    std::mutex m_mutex;
    std::set<std::string> m_all;
};
Complaints& complaints();

using Value = std::variant<std::monostate, int, double, std::string, void*>;

/// A set of properties that knows which there are. Asking for one that no host has, with another type or beyond its
/// dimension is a complaint; asking for a known one that this host does not have is answered as hosts do.
class PropertySet {
public:
    /// `object` is a kind in the table; parameters name theirs, "param:Double2D".
    explicit PropertySet(std::string object) : m_object(std::move(object)) {}
    PropertySet(const PropertySet&) = delete;
    PropertySet& operator=(const PropertySet&) = delete;

    [[nodiscard]] Props handle() { return reinterpret_cast<Props>(this); }
    static PropertySet& of(Props handle) { return *reinterpret_cast<PropertySet*>(handle); }

    /// The host's own hand: sets all of a property's values.
    void put(const std::string& name, std::vector<Value> values);
    [[nodiscard]] bool has(const std::string& name) const { return m_values.contains(name); }
    [[nodiscard]] std::size_t count(const std::string& name) const;
    template <class T>
    [[nodiscard]] T get(const std::string& name, std::size_t index = 0) const {
        const auto found = m_values.find(name);
        return found != m_values.end() && index < found->second.size() &&
                       std::holds_alternative<T>(found->second[index])
                   ? std::get<T>(found->second[index])
                   : T{};
    }
    void copyFrom(const PropertySet& other) { m_values = other.m_values; }

    /// Properties that the host refuses to have set.
    std::set<std::string> refused;

    // The plug-in's hand.
    Status set(const char* name, int index, const Value& value);
    Status ask(const char* name, int index, Value& value, const Value& sample) const;

    static const PropertySuite& suite();

private:
    [[nodiscard]] bool allows(const char* name, int index, const Value& value, bool setting) const;

    std::string m_object;
    std::map<std::string, std::vector<Value>, std::less<>> m_values;
};

}  // namespace lumiset::openfx::test
