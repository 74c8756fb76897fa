#pragma once

// A host that loads the built bundle as OpenFX hosts do, and complains of what it does that not every host allows.

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "hostkit/dynamic_library.h"
#include "tests/openfx/property_set.h"

namespace lumiset::openfx::test {

/// What kind of host it is.
struct Profile {
    std::string name = "org.example.host";
    std::set<std::string> missingSuites{};  ///< with their version: "OfxMessageSuite 2"
    std::set<std::string> refused{};        ///< properties that cannot be set, in any set
    std::vector<std::string> depths{"OfxBitDepthFloat", "OfxBitDepthHalf", "OfxBitDepthShort", "OfxBitDepthByte"};
    bool tellsChanges = true;
    bool tellsRates = true;  ///< of frames, and the project's size
};

/// One parameter, described or in use.
struct Param {
    Param(std::string kindName, std::string paramName);
    std::string kind;  ///< "Double2D"
    std::string name;
    PropertySet props;
    std::vector<double> numbers;  ///< the value, of every kind but strings
    std::string text;
    struct EffectObject* owner = nullptr;  ///< of parameters in use
    unsigned keys = 0;
    std::function<double(double)> moving;  ///< the first number over time
    [[nodiscard]] ParamHandle handle() { return reinterpret_cast<ParamHandle>(this); }
};

/// A picture in the host's memory; see pictures.h for what fills it.
struct Picture {
    PropertySet props{"image"};
    std::vector<std::uint8_t> memory;
};

struct Clip {
    std::string name;
    PropertySet props{"clip"};
    Picture* picture = nullptr;  ///< null: none
    RectD region{0, 0, 64, 48};
};

class TestHost;

/// A descriptor or an instance.
struct EffectObject {
    EffectObject(TestHost& owner, const char* kind) : host(owner), props(kind) {}
    [[nodiscard]] Param& param(const std::string& name);
    [[nodiscard]] EffectHandle handle() { return reinterpret_cast<EffectHandle>(this); }

    TestHost& host;
    PropertySet props;
    PropertySet setProps{"paramset"};
    std::vector<std::unique_ptr<Param>> params;
    std::map<std::string, Clip> clips;
    int abortAfter = -1;  ///< questions until the host wants to stop
    int openEdits = 0;
    std::vector<std::string> undoSteps;
    std::vector<std::string> messages;
    std::string persistentMessage;
    Status reply = kReplyYes;  ///< to questions
    Plugin* plugin = nullptr;
};

/// The arguments of an action.
struct Arguments {
    PropertySet in{"in"};
    PropertySet out{"out"};
};

class TestHost {
public:
    explicit TestHost(Profile hostProfile = {});
    ~TestHost();
    TestHost(const TestHost&) = delete;
    TestHost& operator=(const TestHost&) = delete;

    [[nodiscard]] Host* record() { return &m_record; }
    [[nodiscard]] Status call(Plugin& plugin, const char* action, EffectObject* effect, Arguments* arguments = nullptr);
    /// Load and both descriptions, all of which must answer 0.
    [[nodiscard]] std::unique_ptr<EffectObject> describe(Plugin& plugin,
                                                         const char* context = "OfxImageEffectContextFilter");
    /// An instance of what was described.
    [[nodiscard]] std::unique_ptr<EffectObject> create(Plugin& plugin, EffectObject& descriptor,
                                                       const char* context = "OfxImageEffectContextFilter");
    void destroy(Plugin& plugin, std::unique_ptr<EffectObject> instance);
    /// Tells the plug-in of a change, where this host does.
    Status changed(EffectObject& instance, const std::string& param, const char* reason = "OfxChangeUserEdited");

    Profile profile;
    PropertySet props{"host"};

private:
    Host m_record{};
};

/// The plug-in file.
class Bundle {
public:
    explicit Bundle(const std::string& path);
    [[nodiscard]] int count() const { return m_count(); }
    [[nodiscard]] Plugin& plugin(int index) const { return *m_get(index); }
    [[nodiscard]] Status setHost(const Host* host) const { return m_setHost(host); }

private:
    hostkit::DynamicLibrary m_file;
    int (*m_count)();
    Plugin* (*m_get)(int);
    Status (*m_setHost)(const Host*);
};

/// Pictures that were fetched and not given back.
[[nodiscard]] int heldPictures();

/// The suite for threads of every host.
struct Threading {
    std::atomic<int> calls{0};
    bool refuses = false;  ///< as within one of its own threads
};
Threading& threading();

/// What the draw suite was asked for: "loop 4".
std::vector<std::string>& drawings();

}  // namespace lumiset::openfx::test
