// Effects as a host reads and renders them.

#include <stdio.h>
#include <string.h>

#include "call.h"
#include "contract.h"
#include "frames.h"
#include "host_object.h"
#include "rendering.h"
#include "suites.h"

static const char* nameOf(Word effect) {
    return NAME(EFFECT_NAME, effect);
}

static int allZero(const uint8_t* record, uint32_t from, uint32_t to) {
    for (uint32_t i = from; i < to; ++i) {
        if (record[i] != 0) {
            return 0;
        }
    }
    return 1;
}

static int isText(const uint8_t* text, size_t size) {
    return text[0] != 0 && memchr(text, 0, size) != NULL;
}

static int inUnit(float value) {
    return value >= 0 && value <= 1;
}

// A value of two words as the parameter's type demands.
static void checkValue(const void* value, uint32_t type, uint32_t items) {
    switch (type) {
        case PARAM_POINT:
            CHECK(inUnit(floatAt(value, 0)) && inUnit(floatAt(value, 4)));
            break;
        case PARAM_CHOICE:
            CHECK(wordAt(value, 0) < items);
            break;
        case PARAM_SLIDER:
            CHECK(inUnit(floatAt(value, 0)));
            break;
        case PARAM_COLOR:  // one preset's word has more than a colour's three bytes; the fourth does not count
            break;
        case PARAM_BOOLEAN:
            CHECK(*(const uint8_t*)value <= 1);
            break;
        default:
            break;
    }
}

typedef struct Params {
    uint32_t count;
    uint32_t types[HOST_MAX_PARAMS];
    uint32_t items[HOST_MAX_PARAMS];
} Params;

// Reads every parameter's record; what its type does not use must have been zeroed, and not a byte more.
static Params checkParams(Word effect) {
    Params params = {0};
    uint8_t record[PARAM_INFO_SIZE + 16];
    for (;;) {
        about("%s, parameter %u", nameOf(effect), params.count);
        memset(record, GUARD, sizeof record);
        if (!ASK(EFFECT_PARAM_INFO, effect, params.count, WORD(record))) {
            break;
        }
        const uint32_t type = wordAt(record, PARAM_INFO_TYPE);
        const uint32_t items = type == PARAM_CHOICE ? wordAt(record, PARAM_INFO_MINIMUM) : 0;
        uint32_t used = PARAM_INFO_MINIMUM;  // end of the part that depends on the type
        if (type == PARAM_SLIDER) {
            CHECK(floatAt(record, PARAM_INFO_MINIMUM) < floatAt(record, PARAM_INFO_MAXIMUM));
            CHECK(wordAt(record, PARAM_INFO_DECIMALS) <= 1);
            used = PARAM_INFO_DECIMALS + 4;
        } else if (type == PARAM_CHOICE) {
            CHECK(items >= 1 && items <= 10);
            for (uint32_t item = 0; item < items && item < 10; ++item) {
                CHECK(isText(record + PARAM_INFO_ITEMS + PARAM_INFO_ITEM_SIZE * item, PARAM_INFO_ITEM_SIZE));
            }
            used = PARAM_INFO_ITEMS + PARAM_INFO_ITEM_SIZE * items;
        } else if (type == PARAM_GROUP) {
            CHECK(record[PARAM_INFO_MINIMUM] <= 1);
            used = PARAM_INFO_MINIMUM + 1;
        }
        CHECK(type <= PARAM_GROUP);
        CHECK(allZero(record, used, PARAM_INFO_LABEL));
        CHECK(isText(record + PARAM_INFO_LABEL, PARAM_INFO_RECT - PARAM_INFO_LABEL));
        CHECK(record[PARAM_INFO_VISIBLE] == 1 && allZero(record, PARAM_INFO_VISIBLE + 1, PARAM_INFO_SIZE));
        for (uint32_t i = PARAM_INFO_SIZE; i < sizeof record; ++i) {
            CHECK(record[i] == GUARD);
        }
        checkValue(record + PARAM_INFO_DEFAULT, type, items);
        params.types[params.count] = type;
        params.items[params.count] = items;
        ++params.count;
        if (params.count == HOST_MAX_PARAMS) {
            break;
        }
    }
    CHECK(params.count > 0 && params.count < HOST_MAX_PARAMS);
    CHECK(record[0] == GUARD);  // the call past the end wrote nothing
    CHECK(!ASK(EFFECT_PARAM_INFO, effect, 0, 0));
    return params;
}

static uint32_t slotCount(Word effect) {
    uint32_t value[2];
    uint32_t count = 0;
    while (count < HOST_MAX_PARAMS && ASK(EFFECT_PRESET_VALUE, effect, 0, count, WORD(value))) {
        ++count;
    }
    return count;
}

// Reads every preset; its slots are the parameters by index, or those that carry a value in their order.
static void checkPresets(Word effect, const Params* params) {
    const uint32_t slots = slotCount(effect);
    uint32_t valued = 0;
    for (uint32_t param = 0; param < params->count; ++param) {
        valued += params->types[param] != PARAM_GROUP;
    }
    about("%s, presets", nameOf(effect));
    CHECK(slots == params->count || slots == valued);
    uint32_t preset = 0;
    for (const char* name; (name = NAME(EFFECT_PRESET_NAME, effect, preset)) != NULL; ++preset) {
        about("%s, preset %u", nameOf(effect), preset);
        CHECK(isText((const uint8_t*)name, 64));
        uint32_t slot = 0;
        for (uint32_t param = 0; param < params->count; ++param) {
            if (slots == params->count || params->types[param] != PARAM_GROUP) {
                uint32_t value[3] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
                CHECK(ASK(EFFECT_PRESET_VALUE, effect, preset, slot, WORD(value)));
                CHECK(value[2] == 0xFFFFFFFF);
                checkValue(value, params->types[param], params->items[param]);
                ++slot;
            }
        }
    }
    CHECK(preset > 0);
    uint32_t value[2];
    CHECK(!ASK(EFFECT_PRESET_VALUE, effect, preset, 0, WORD(value)));
    CHECK(!ASK(EFFECT_PRESET_VALUE, effect, 0, slots, WORD(value)));
    CHECK(!ASK(EFFECT_PRESET_VALUE, effect, 0, 0, 0));
}

static void checkToolTips(Word effect, const Params* params) {
    about("%s, tool tips", nameOf(effect));
    Word tips = 0;
    CHECK(METHOD(QUERY_INTERFACE, effect, WORD(ID_PARAM_TOOL_TIP), WORD(&tips)) == 0);
    CHECK(tips != 0 && tips != effect);
    for (uint32_t param = 0; param < params->count; ++param) {
        const char* text = NAME(TOOL_TIP_TEXT, tips, param);
        CHECK(text != NULL && (text[0] == 0) == (params->types[param] == PARAM_GROUP));
    }
    CHECK(ADDRESS(TOOL_TIP_TEXT, tips, params->count) == 0);
    // Both sides are one object with one count.
    Word main = 0;
    CHECK(METHOD(QUERY_INTERFACE, tips, WORD(ID_UNKNOWN), WORD(&main)) == 0);
    CHECK(main == effect);
    CHECK(METHOD(ADD_REF, tips) == 4);
    CHECK(METHOD(RELEASE, effect) == 3);
    CHECK(METHOD(RELEASE, effect) == 2);
    CHECK(METHOD(RELEASE, tips) == 1);
}

static Picture source;
static Picture target;

static void checkRendering(Word effect, const Params* params) {
    enum { WIDTH = 97, HEIGHT = 61 };  // enough for whole vectors and a rest
    uint8_t info[INFO_SIZE];
    plainInfo(info);
    for (uint32_t format = 0; format <= 4; ++format) {
        about("%s, format %u", nameOf(effect), format);
        const int32_t bytes = format < 2 ? 4 : 16;
        makePicture(&source, WIDTH, HEIGHT, format, bytes, 4);
        makePicture(&target, WIDTH, HEIGHT, format, bytes, 12);
        for (int32_t y = 0; y < HEIGHT; ++y) {
            for (int32_t x = 0; x < WIDTH; ++x) {
                const uint8_t level = (uint8_t)(x * 2 + y);
                const uint8_t inside = x > 20 && y > 10 ? 255 : 0;
                if (format < 2) {
                    putPixel(&source, x, y, format == 0 ? level : inside, level, level, format == 0 ? inside : level);
                } else {
                    putSamples(&source, x, y, format == 3 ? level / 255.0F : inside / 255.0F, level / 255.0F,
                               level / 255.0F, format == 3 ? inside / 255.0F : level / 255.0F);
                }
            }
        }
        HostObject host;
        initHost(&host);
        CHECK(render(effect, &host, &source, &target, info) == (format != 2));
        CHECK(format == 2 || host.asked > 0);
        for (uint32_t param = 0; param < HOST_MAX_PARAMS && format != 2; ++param) {
            CHECK(param >= params->count || host.types[param] == 0 || host.types[param] == params->types[param]);
        }
    }
    HostObject host;
    initHost(&host);
    CHECK(!ASK(EFFECT_PROCESS_FRAME, effect, WORD(&host), 0, 0, WORD(target.record), WORD(info)));
    CHECK(!ASK(EFFECT_PROCESS_FRAME, effect, WORD(&host), WORD(source.record), 0, 0, WORD(info)));
}

// A host without OpenGL is told no, and gets its references back.
static void checkGpuEntries(Word effect) {
    about("%s, OpenGL", nameOf(effect));
    HostObject host;
    initHost(&host);
    uint8_t programs[256] = {0};
    uint8_t texture[TEXTURE_SIZE] = {0};
    uint8_t info[INFO_SIZE];
    plainInfo(info);
    CHECK(!ASK(EFFECT_INIT_GPU, effect, WORD(&host), 0, WORD(programs), 0));
    CHECK(!ASK(EFFECT_PROCESS_FRAME_GPU, effect, 0, WORD(&host), 0, WORD(texture), 0, WORD(texture), WORD(info)));
    CHECK(host.references == 1 && host.blocks == 0);
}

void checkEffect(Word effect) {
    about("%s", nameOf(effect));
    checkUnknown(effect, ID_VIDEO_EFFECT, NO_INTERFACE);
    checkUnknown(effect, ID_VIDEO_GPU_EFFECT, NO_INTERFACE);
    const Params params = checkParams(effect);
    checkPresets(effect, &params);
    checkToolTips(effect, &params);
    checkRendering(effect, &params);
    checkGpuEntries(effect);
}
