#pragma once

// The binary interface between an OpenFX 1.5 host and its plug-ins, declared from its published description: the two
// records that are exchanged and the suites of functions that a host hands out by name and version. The order of the
// members is the interface. Every function answers a `Status` unless it says otherwise.

#include <cstddef>

extern "C" {

namespace lumiset::openfx {

using Status = int;

enum : Status {
    kOk = 0,
    kFailed = 1,
    kErrFatal = 2,
    kErrUnknown = 3,
    kErrMissingHostFeature = 4,
    kErrUnsupported = 5,
    kErrExists = 6,
    kErrFormat = 7,
    kErrMemory = 8,
    kErrBadHandle = 9,
    kErrBadIndex = 10,
    kErrValue = 11,
    kReplyYes = 12,
    kReplyNo = 13,
    kReplyDefault = 14,
    kErrImageFormat = 1000,
};

// What hosts hand out, known by address alone.
using Props = struct PropsHandle*;
using EffectHandle = struct EffectHandleTag*;
using ClipHandle = struct ClipHandleTag*;
using MemHandle = struct MemHandleTag*;
using ParamSetHandle = struct ParamSetHandleTag*;
using ParamHandle = struct ParamHandleTag*;
using InteractHandle = struct InteractHandleTag*;
using DrawHandle = struct DrawHandleTag*;
using MutexHandle = struct MutexHandleTag*;

struct RectD {
    double x1, y1, x2, y2;
};
struct RectI {
    int x1, y1, x2, y2;
};
struct RangeD {
    double min, max;
};
struct PointD {
    double x, y;
};
struct ColourF {
    float r, g, b, a;
};

struct Host {
    Props host;
    /// The suite, or null where the host does not have it.
    const void* (*fetchSuite)(Props host, const char* name, int version);
};

using MainEntry = Status(const char* action, const void* handle, Props inArgs, Props outArgs);

struct Plugin {
    const char* api;
    int apiVersion;
    const char* identifier;  ///< for ever
    unsigned versionMajor;
    unsigned versionMinor;
    void (*setHost)(Host*);
    MainEntry* mainEntry;
};

inline constexpr const char* kImageEffectApi = "OfxImageEffectPluginAPI";
inline constexpr int kImageEffectApiVersion = 1;

inline constexpr const char* kPropertySuite = "OfxPropertySuite";
struct PropertySuite {
    Status (*setPointer)(Props, const char* property, int index, void*);
    Status (*setString)(Props, const char* property, int index, const char*);
    Status (*setDouble)(Props, const char* property, int index, double);
    Status (*setInt)(Props, const char* property, int index, int);
    Status (*setPointerN)(Props, const char* property, int count, void* const*);
    Status (*setStringN)(Props, const char* property, int count, const char* const*);
    Status (*setDoubleN)(Props, const char* property, int count, const double*);
    Status (*setIntN)(Props, const char* property, int count, const int*);
    Status (*getPointer)(Props, const char* property, int index, void**);
    Status (*getString)(Props, const char* property, int index, char**);
    Status (*getDouble)(Props, const char* property, int index, double*);
    Status (*getInt)(Props, const char* property, int index, int*);
    Status (*getPointerN)(Props, const char* property, int count, void**);
    Status (*getStringN)(Props, const char* property, int count, char**);
    Status (*getDoubleN)(Props, const char* property, int count, double*);
    Status (*getIntN)(Props, const char* property, int count, int*);
    Status (*reset)(Props, const char* property);
    Status (*getDimension)(Props, const char* property, int*);
};

inline constexpr const char* kImageEffectSuite = "OfxImageEffectSuite";
struct ImageEffectSuite {
    Status (*getPropertySet)(EffectHandle, Props*);
    Status (*getParamSet)(EffectHandle, ParamSetHandle*);
    Status (*clipDefine)(EffectHandle, const char* name, Props*);
    Status (*clipGetHandle)(EffectHandle, const char* name, ClipHandle*, Props* orNull);
    Status (*clipGetPropertySet)(ClipHandle, Props*);
    Status (*clipGetImage)(ClipHandle, double time, const RectD* regionOrNull, Props* image);
    Status (*clipReleaseImage)(Props image);
    Status (*clipGetRegionOfDefinition)(ClipHandle, double time, RectD*);
    int (*abort)(EffectHandle);  ///< 1: stop
    Status (*imageMemoryAlloc)(EffectHandle, std::size_t, MemHandle*);
    Status (*imageMemoryFree)(MemHandle);
    Status (*imageMemoryLock)(MemHandle, void**);
    Status (*imageMemoryUnlock)(MemHandle);
};

inline constexpr const char* kParameterSuite = "OfxParameterSuite";
/// The arguments behind the dots follow from the kind of parameter: pointers where values are asked for, values where
/// they are set.
struct ParameterSuite {
    Status (*define)(ParamSetHandle, const char* kind, const char* name, Props*);
    Status (*getHandle)(ParamSetHandle, const char* name, ParamHandle*, Props* orNull);
    Status (*setGetPropertySet)(ParamSetHandle, Props*);
    Status (*getPropertySet)(ParamHandle, Props*);
    Status (*getValue)(ParamHandle, ...);
    Status (*getValueAtTime)(ParamHandle, double time, ...);
    Status (*getDerivative)(ParamHandle, double time, ...);
    Status (*getIntegral)(ParamHandle, double time1, double time2, ...);
    Status (*setValue)(ParamHandle, ...);
    Status (*setValueAtTime)(ParamHandle, double time, ...);
    Status (*getNumKeys)(ParamHandle, unsigned*);
    Status (*getKeyTime)(ParamHandle, unsigned nth, double*);
    Status (*getKeyIndex)(ParamHandle, double time, int direction, int* index);
    Status (*deleteKey)(ParamHandle, double time);
    Status (*deleteAllKeys)(ParamHandle);
    Status (*copy)(ParamHandle to, ParamHandle from, double offset, const RangeD*);
    Status (*editBegin)(ParamSetHandle, const char* undoLabel);
    Status (*editEnd)(ParamSetHandle);
};

inline constexpr const char* kMemorySuite = "OfxMemorySuite";
struct MemorySuite {
    Status (*alloc)(void* effectOrNull, std::size_t, void**);
    Status (*free)(void*);
};

inline constexpr const char* kMultiThreadSuite = "OfxMultiThreadSuite";
struct MultiThreadSuite {
    Status (*multiThread)(void (*)(unsigned index, unsigned count, void*), unsigned threads, void*);
    Status (*numCpus)(unsigned*);
    Status (*index)(unsigned*);
    int (*isSpawnedThread)();  ///< 0 or 1
    Status (*mutexCreate)(MutexHandle*, int lockCount);
    Status (*mutexDestroy)(MutexHandle);
    Status (*mutexLock)(MutexHandle);
    Status (*mutexUnLock)(MutexHandle);
    Status (*mutexTryLock)(MutexHandle);
};

inline constexpr const char* kMessageSuite = "OfxMessageSuite";
/// Version 1 ends behind `message`.
struct MessageSuite {
    Status (*message)(void* effect, const char* type, const char* id, const char* format, ...);
    Status (*setPersistentMessage)(void* effect, const char* type, const char* id, const char* format, ...);
    Status (*clearPersistentMessage)(void* effect);
};

inline constexpr const char* kInteractSuite = "OfxInteractSuite";
struct InteractSuite {
    Status (*swapBuffers)(InteractHandle);
    Status (*redraw)(InteractHandle);
    Status (*getPropertySet)(InteractHandle, Props*);
};

inline constexpr const char* kDrawSuite = "OfxDrawSuite";
/// Only while an overlay is asked to draw itself.
struct DrawSuite {
    Status (*getColour)(DrawHandle, int standard, ColourF*);
    Status (*setColour)(DrawHandle, const ColourF*);
    Status (*setLineWidth)(DrawHandle, float);
    Status (*setLineStipple)(DrawHandle, int pattern);
    Status (*draw)(DrawHandle, int primitive, const PointD*, int count);
    Status (*drawText)(DrawHandle, const char* utf8, const PointD*, int alignment);
};
enum : int { kDrawLines = 0, kDrawLineStrip = 1, kDrawLineLoop = 2, kDrawRectangle = 3, kDrawPolygon = 4 };

static_assert(sizeof(void*) != 8 || (sizeof(Host) == 16 && sizeof(Plugin) == 48 && offsetof(Plugin, identifier) == 16 &&
                                     offsetof(Plugin, versionMajor) == 24 && offsetof(Plugin, setHost) == 32 &&
                                     offsetof(Plugin, mainEntry) == 40));

}  // namespace lumiset::openfx

// What a plug-in file exports. `OfxSetHost` is new in 1.5 and comes before the others where it comes at all.
lumiset::openfx::Status OfxSetHost(const lumiset::openfx::Host* host);
int OfxGetNumberOfPlugins();
lumiset::openfx::Plugin* OfxGetPlugin(int nth);
}
