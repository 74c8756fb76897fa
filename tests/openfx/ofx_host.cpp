#include "tests/openfx/ofx_host.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <stdexcept>
#include <thread>

namespace lumiset::openfx::test {
namespace {

thread_local std::string currentAction;
std::atomic<int> held{0};

/// For calls that are allowed in some actions only.
void expectIn(std::initializer_list<const char*> actions, const char* what) {
    for (const char* each : actions) {
        if (currentAction == each) {
            return;
        }
    }
    complaints().add(std::string(what) + " in " + currentAction);
}

EffectObject& effectOf(void* handle) {
    return *static_cast<EffectObject*>(handle);
}
EffectObject& effectOf(EffectHandle handle) {
    return effectOf(static_cast<void*>(handle));
}

// The image effect suite.

Status getPropertySet(EffectHandle effect, Props* out) {
    *out = effectOf(effect).props.handle();
    return kOk;
}
Status getParamSet(EffectHandle effect, ParamSetHandle* out) {
    *out = reinterpret_cast<ParamSetHandle>(effect);
    return kOk;
}
EffectObject& effectOf(ParamSetHandle set) {
    return effectOf(static_cast<void*>(set));
}
Status clipDefine(EffectHandle effect, const char* name, Props* out) {
    expectIn({"OfxImageEffectActionDescribeInContext"}, "defines a clip");
    Clip& clip = effectOf(effect).clips[name];
    clip.name = name;
    *out = clip.props.handle();
    return kOk;
}
Status clipGetHandle(EffectHandle effect, const char* name, ClipHandle* out, Props* props) {
    const auto found = effectOf(effect).clips.find(name);
    if (found == effectOf(effect).clips.end()) {
        complaints().add(std::string("asks for the clip ") + name);
        return kErrBadHandle;
    }
    *out = reinterpret_cast<ClipHandle>(&found->second);
    if (props != nullptr) {
        *props = found->second.props.handle();
    }
    return kOk;
}
Clip& clipOf(ClipHandle clip) {
    return *reinterpret_cast<Clip*>(clip);
}
Status clipGetPropertySet(ClipHandle clip, Props* out) {
    *out = clipOf(clip).props.handle();
    return kOk;
}
Status clipGetImage(ClipHandle clip, double /*time*/, const RectD* region, Props* out) {
    expectIn({"OfxImageEffectActionRender"}, "fetches a picture");
    if (region != nullptr) {
        complaints().add("asks for a part of a picture");
    }
    if (clipOf(clip).picture == nullptr) {
        return kFailed;
    }
    ++held;
    *out = clipOf(clip).picture->props.handle();
    return kOk;
}
Status clipReleaseImage(Props image) {
    --held;
    return image != nullptr ? kOk : kErrBadHandle;
}
Status clipGetRegion(ClipHandle clip, double /*time*/, RectD* out) {
    *out = clipOf(clip).region;
    return out->x2 > out->x1 ? kOk : kFailed;
}
int abortAsked(EffectHandle effect) {
    EffectObject& object = effectOf(effect);
    return object.abortAfter >= 0 && object.abortAfter-- == 0 ? (object.abortAfter = 0, 1) : 0;
}

// The parameter suite.

bool isText(const Param& param) {
    return param.kind == "String";
}
Param& paramOf(ParamHandle param) {
    return *reinterpret_cast<Param*>(param);
}
Status paramDefine(ParamSetHandle set, const char* kind, const char* name, Props* out) {
    expectIn({"OfxImageEffectActionDescribeInContext"}, "defines a parameter");
    EffectObject& effect = effectOf(set);
    const std::string prefix = "OfxParamType";
    for (const auto& each : effect.params) {
        if (each->name == name) {
            complaints().add(std::string("defines twice: ") + name);
        }
    }
    effect.params.push_back(std::make_unique<Param>(std::string(kind).substr(prefix.size()), name));
    effect.params.back()->props.refused = effect.host.profile.refused;
    *out = effect.params.back()->props.handle();
    return kOk;
}
Status paramGetHandle(ParamSetHandle set, const char* name, ParamHandle* out, Props* props) {
    for (const auto& each : effectOf(set).params) {
        if (each->name == name) {
            *out = each->handle();
            if (props != nullptr) {
                *props = each->props.handle();
            }
            return kOk;
        }
    }
    return kErrUnknown;
}
Status paramSetProps(ParamSetHandle set, Props* out) {
    *out = effectOf(set).setProps.handle();
    return kOk;
}
Status paramProps(ParamHandle param, Props* out) {
    *out = paramOf(param).props.handle();
    return kOk;
}
Status paramGetValueAtTime(ParamHandle handle, double time, ...) {
    const Param& param = paramOf(handle);
    va_list out;
    va_start(out, time);
    if (isText(param)) {
        thread_local std::string last;
        last = param.text;
        *va_arg(out, char**) = last.data();
    } else if (param.kind == "Boolean" || param.kind == "Choice") {
        *va_arg(out, int*) = static_cast<int>(param.numbers[0]);
    } else {
        for (std::size_t i = 0; i < param.numbers.size(); ++i) {
            *va_arg(out, double*) = i == 0 && param.moving ? param.moving(time) : param.numbers[i];
        }
    }
    va_end(out);
    return kOk;
}
Status paramSetValue(ParamHandle handle, ...) {
    expectIn({"OfxActionInstanceChanged", "OfxInteractActionPenMotion", "OfxInteractActionKeyDown"}, "sets a value");
    Param& param = paramOf(handle);
    va_list in;
    va_start(in, handle);
    if (isText(param)) {
        param.text = va_arg(in, char*);
    } else if (param.kind == "Boolean" || param.kind == "Choice") {
        param.numbers[0] = va_arg(in, int);
    } else {
        for (double& number : param.numbers) {
            number = va_arg(in, double);
        }
    }
    va_end(in);
    // As hosts do: within the call.
    param.owner->host.changed(*param.owner, param.name, "OfxChangePluginEdited");
    return kOk;
}
Status paramGetNumKeys(ParamHandle param, unsigned* out) {
    *out = paramOf(param).keys;
    return kOk;
}
Status paramDeleteAllKeys(ParamHandle param) {
    paramOf(param).keys = 0;
    paramOf(param).moving = nullptr;
    return kOk;
}
Status paramEditBegin(ParamSetHandle set, const char* label) {
    EffectObject& effect = effectOf(set);
    if (effect.openEdits++ == 0) {
        effect.undoSteps.emplace_back(label);
    }
    return kOk;
}
Status paramEditEnd(ParamSetHandle set) {
    --effectOf(set).openEdits;
    return kOk;
}

// Messages.

std::string formatted(const char* format, va_list arguments) {
    char text[1024];
    std::vsnprintf(text, sizeof text, format, arguments);
    return text;
}
Status message(void* effect, const char* type, const char* /*id*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    effectOf(effect).messages.push_back(formatted(format, arguments));
    va_end(arguments);
    return std::string(type) == "OfxMessageQuestion" ? effectOf(effect).reply : kOk;
}
Status setPersistentMessage(void* effect, const char* /*type*/, const char* /*id*/, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    effectOf(effect).persistentMessage = formatted(format, arguments);
    va_end(arguments);
    return kOk;
}
Status clearPersistentMessage(void* effect) {
    effectOf(effect).persistentMessage.clear();
    return kOk;
}

// Threads.

Status multiThread(void (*work)(unsigned, unsigned, void*), unsigned count, void* context) {
    ++threading().calls;
    if (threading().refuses) {
        return kErrExists;
    }
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back(work, i, count, context);
    }
    for (std::thread& each : threads) {
        each.join();
    }
    return kOk;
}
Status numCpus(unsigned* out) {
    *out = 3;
    return kOk;
}

// Overlays. The handle of an interact is its property set.

Status interactProps(InteractHandle interact, Props* out) {
    *out = reinterpret_cast<Props>(interact);
    return kOk;
}
Status interactRedraw(InteractHandle /*interact*/) {
    return kOk;
}
Status drawSetColour(DrawHandle /*draw*/, const ColourF* /*colour*/) {
    return kOk;
}
Status drawSetWidth(DrawHandle /*draw*/, float /*width*/) {
    return kOk;
}
Status drawShape(DrawHandle draw, int primitive, const PointD* points, int count) {
    char text[256];
    std::snprintf(text, sizeof text, "%d of %d from %.1f,%.1f to %.1f,%.1f", primitive, count, points[0].x, points[0].y,
                  points[count / 2].x, points[count / 2].y);
    drawings().emplace_back(text);
    return draw != nullptr ? kOk : kErrBadHandle;
}

const ImageEffectSuite kEffects{&getPropertySet, &getParamSet,      &clipDefine,    &clipGetHandle, &clipGetPropertySet,
                                &clipGetImage,   &clipReleaseImage, &clipGetRegion, &abortAsked,    nullptr,
                                nullptr,         nullptr,           nullptr};
const ParameterSuite kParameters{
    &paramDefine, &paramGetHandle, &paramSetProps,      &paramProps, nullptr,          &paramGetValueAtTime,
    nullptr,      nullptr,         &paramSetValue,      nullptr,     &paramGetNumKeys, nullptr,
    nullptr,      nullptr,         &paramDeleteAllKeys, nullptr,     &paramEditBegin,  &paramEditEnd};
const MessageSuite kMessages{&message, &setPersistentMessage, &clearPersistentMessage};
const MultiThreadSuite kThreads{&multiThread, &numCpus, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
const InteractSuite kInteracts{nullptr, &interactRedraw, &interactProps};
const DrawSuite kDraws{nullptr, &drawSetColour, &drawSetWidth, nullptr, &drawShape, nullptr};

}  // namespace

Param::Param(std::string kindName, std::string paramName)
    : kind(std::move(kindName)), name(std::move(paramName)), props("param:" + kind) {}

Param& EffectObject::param(const std::string& name) {
    for (const auto& each : params) {
        if (each->name == name) {
            return *each;
        }
    }
    throw std::runtime_error("no parameter " + name);
}

namespace {

std::map<Props, TestHost*>& hosts() {
    static std::map<Props, TestHost*> all;
    return all;
}

const void* fetchSuite(Props host, const char* name, int version) {
    static const std::map<std::string, const void*> suites{{"OfxPropertySuite 1", &PropertySet::suite()},
                                                           {"OfxImageEffectSuite 1", &kEffects},
                                                           {"OfxParameterSuite 1", &kParameters},
                                                           {"OfxMessageSuite 1", &kMessages},
                                                           {"OfxMessageSuite 2", &kMessages},
                                                           {"OfxMultiThreadSuite 1", &kThreads},
                                                           {"OfxInteractSuite 1", &kInteracts},
                                                           {"OfxDrawSuite 1", &kDraws}};
    const std::string wanted = std::string(name) + " " + std::to_string(version);
    const auto found = suites.find(wanted);
    return found != suites.end() && !hosts().at(host)->profile.missingSuites.contains(wanted) ? found->second : nullptr;
}

}  // namespace

TestHost::TestHost(Profile hostProfile) : profile(std::move(hostProfile)) {
    props.put("OfxPropName", {profile.name});
    props.put("OfxImageEffectPropSupportsOverlays", {1});
    props.put("OfxImageEffectPropSupportedPixelDepths", {profile.depths.begin(), profile.depths.end()});
    hosts()[props.handle()] = this;
    m_record = {props.handle(), &fetchSuite};
}

TestHost::~TestHost() {
    hosts().erase(props.handle());
}

Status TestHost::call(Plugin& plugin, const char* action, EffectObject* effect, Arguments* arguments) {
    const std::string before = currentAction;
    currentAction = action;
    const Status status = plugin.mainEntry(action, effect, arguments != nullptr ? arguments->in.handle() : nullptr,
                                           arguments != nullptr ? arguments->out.handle() : nullptr);
    currentAction = before;
    return status;
}

std::unique_ptr<EffectObject> TestHost::describe(Plugin& plugin, const char* context) {
    plugin.setHost(&m_record);
    auto effect = std::make_unique<EffectObject>(*this, "effect");
    effect->props.refused = profile.refused;
    Arguments arguments;
    arguments.in.put("OfxImageEffectPropContext", {std::string(context)});
    if (call(plugin, "OfxActionLoad", nullptr) != kOk || call(plugin, "OfxActionDescribe", effect.get()) != kOk ||
        call(plugin, "OfxImageEffectActionDescribeInContext", effect.get(), &arguments) != kOk) {
        throw std::runtime_error("not described");
    }
    return effect;
}

std::unique_ptr<EffectObject> TestHost::create(Plugin& plugin, EffectObject& descriptor, const char* context) {
    auto instance = std::make_unique<EffectObject>(*this, "instance");
    instance->plugin = &plugin;
    instance->props.put("OfxImageEffectPropContext", {std::string(context)});
    for (const auto& [name, clip] : descriptor.clips) {
        Clip& own = instance->clips[name];
        own.name = name;
        own.props.put("OfxImageEffectPropComponents", {std::string("OfxImageComponentRGBA")});
    }
    if (profile.tellsRates) {
        instance->props.put("OfxImageEffectPropProjectSize", {64.0, 48.0});
        instance->props.put("OfxImageEffectPropProjectOffset", {0.0, 0.0});
    }
    for (const auto& each : descriptor.params) {
        auto param = std::make_unique<Param>(each->kind, each->name);
        param->props.copyFrom(each->props);
        param->owner = instance.get();
        param->text = each->props.get<std::string>("OfxParamPropDefault");
        const std::size_t size = std::max<std::size_t>(each->props.count("OfxParamPropDefault"), 1);
        // Hosts turn a default in shares of the project into a position.
        const bool shares =
            each->props.get<std::string>("OfxParamPropDefaultCoordinateSystem") == "OfxParamCoordinatesNormalised";
        for (std::size_t i = 0; i < size; ++i) {
            const double number = each->props.get<double>("OfxParamPropDefault", i);
            param->numbers.push_back(shares ? number * (i == 0 ? 64.0 : 48.0)
                                            : number + each->props.get<int>("OfxParamPropDefault", i));
        }
        instance->params.push_back(std::move(param));
    }
    if (call(plugin, "OfxActionCreateInstance", instance.get()) != kOk) {
        throw std::runtime_error("not created");
    }
    return instance;
}

void TestHost::destroy(Plugin& plugin, std::unique_ptr<EffectObject> instance) {
    if (call(plugin, "OfxActionDestroyInstance", instance.get()) != kOk) {
        complaints().add("an instance is not destroyed");
    }
}

Status TestHost::changed(EffectObject& instance, const std::string& param, const char* reason) {
    if (!profile.tellsChanges) {
        return kReplyDefault;
    }
    Arguments arguments;
    arguments.in.put("OfxPropType", {std::string("OfxTypeParameter")});
    arguments.in.put("OfxPropName", {param});
    arguments.in.put("OfxPropChangeReason", {std::string(reason)});
    arguments.in.put("OfxPropTime", {3.0});
    arguments.in.put("OfxImageEffectPropRenderScale", {1.0, 1.0});
    return call(*instance.plugin, "OfxActionInstanceChanged", &instance, &arguments);
}

Bundle::Bundle(const std::string& path)
    : m_file(path),
      m_count(reinterpret_cast<int (*)()>(m_file.symbol("OfxGetNumberOfPlugins"))),
      m_get(reinterpret_cast<Plugin* (*)(int)>(m_file.symbol("OfxGetPlugin"))),
      m_setHost(reinterpret_cast<Status (*)(const Host*)>(m_file.symbol("OfxSetHost"))) {
    if (m_count == nullptr || m_get == nullptr || m_setHost == nullptr) {
        throw std::runtime_error("the plug-in file does not export what hosts ask for");
    }
}

Threading& threading() {
    static Threading s_threading;
    return s_threading;
}

int heldPictures() {
    return held;
}

std::vector<std::string>& drawings() {
    static std::vector<std::string> all;
    return all;
}

}  // namespace lumiset::openfx::test
