#pragma once

// The binary interface between a frei0r plug-in and its host, version 1, declared from its public description.

#include <cstdint>

extern "C" {

enum Frei0rPluginType { kFrei0rFilter = 0, kFrei0rSource = 1, kFrei0rMixer2 = 2, kFrei0rMixer3 = 3 };

/// Order of a pixel's four bytes in memory. `kFrei0rPacked32` leaves it open.
enum Frei0rColorModel { kFrei0rBgra8888 = 0, kFrei0rRgba8888 = 1, kFrei0rPacked32 = 2 };

/// What the pointer of a parameter call points to.
enum Frei0rParamType {
    kFrei0rBool = 0,      ///< a double, true from 0.5
    kFrei0rDouble = 1,    ///< a double, 0 to 1
    kFrei0rColor = 2,     ///< a `Frei0rColor`
    kFrei0rPosition = 3,  ///< two doubles, x and y, 0 to 1
    kFrei0rString = 4,    ///< a pointer to characters
};

struct Frei0rColor {
    float red;
    float green;
    float blue;
};

struct Frei0rPluginInfo {
    const char* name;
    const char* author;
    int pluginType;
    int colorModel;
    int frei0rVersion;
    int majorVersion;
    int minorVersion;
    int parameterCount;
    const char* explanation;
};

struct Frei0rParamInfo {
    const char* name;
    int type;
    const char* explanation;
};

using Frei0rInstance = void*;

inline constexpr int kFrei0rVersion = 1;

// Once for the loaded file, before and after everything else. Nonzero is success.
int f0r_init();
void f0r_deinit();

// Ask at any time. The texts stay where they are while the file is loaded.
void f0r_get_plugin_info(Frei0rPluginInfo* info);
void f0r_get_param_info(Frei0rParamInfo* info, int index);

/// An instance for pictures of `width` by `height` pixels, or null.
Frei0rInstance f0r_construct(unsigned int width, unsigned int height);
void f0r_destruct(Frei0rInstance instance);

void f0r_set_param_value(Frei0rInstance instance, void* value, int index);
/// A string stays the instance's own and lasts until it is set again.
void f0r_get_param_value(Frei0rInstance instance, void* value, int index);

/// Renders `source` to `destination`, rows of width * 4 bytes from the top of the picture, one behind the other.
void f0r_update(Frei0rInstance instance, double time, const std::uint32_t* source, std::uint32_t* destination);
}
