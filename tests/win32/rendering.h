#pragma once

#include "call.h"
#include "frames.h"
#include "host_object.h"

// A whole frame at 0.75 seconds with square pixels; words that the contract does not list hold garbage.
void plainInfo(uint8_t* info);
// Renders `source` to `target` and answers what the effect did. The host must have got everything back, and the source
// be as it was.
int render(Word effect, HostObject* host, Picture* source, Picture* target, const uint8_t* info);
