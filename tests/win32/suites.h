#pragma once

// What the host asks of the module's objects. An object is the address that the module answered.

#include <stdint.h>

#include "call.h"

// `IUnknown` with an interface or two that the object answers for, and the status for a null out pointer.
void checkUnknown(Word object, const uint8_t* interfaceId, uint32_t statusForNull);
// One effect of the library: its description, its presets, its tool tips, a frame in each format.
void checkEffect(Word effect);
// "Outline" in particular, whose picture tells whether each field of the records was understood.
void checkOutline(Word effect);
// The frame processor, slot by slot.
void checkFrameProcessor(Word processor);
// Presets written and read, and every way to fail without a window.
void checkPresetSaver(Word saver);
