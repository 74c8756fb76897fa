#include "rendering.h"

#include <string.h>

#include "call.h"

void plainInfo(uint8_t* info) {
    memset(info, 0xCC, INFO_SIZE);
    putWord(info, INFO_FLAGS, 0);
    putDouble(info, INFO_TIME, 0.75);
    putDouble(info, INFO_PIXEL_ASPECT, 1.0);
    putWord(info, INFO_FIELD, 0xCCCC0000u | INFO_WHOLE_FRAME);
}

int render(Word effect, HostObject* host, Picture* source, Picture* target, const uint8_t* info) {
    static Picture copy;
    copy = *source;
    const int done = ASK(EFFECT_PROCESS_FRAME, effect, WORD(host), WORD(source->record), 0xDEADBEEF,
                         WORD(target->record), WORD(info));
    CHECK(memcmp(&copy, source, sizeof copy) == 0);
    CHECK(guardsIntact(target));
    CHECK(host->references == 1 && host->blocks == 0);
    return done;
}
