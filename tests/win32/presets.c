// Preset files through the boundary: an effect that the host describes, and the record that calls end in.

#include <windows.h>

#include <string.h>

#include "call.h"
#include "contract.h"
#include "suites.h"

#define METHOD_OF_HOST __attribute__((stdcall))

enum { OUTLINE = 2, PARAM_COUNT = 6, UNTOUCHED = 0xA5 };

typedef struct PresetEffect {
    const void* const* vtable;
    const char* name;
    uint32_t types[PARAM_COUNT];
    uint32_t values[PARAM_COUNT][2];
} PresetEffect;

METHOD_OF_HOST static uint32_t queryInterface(PresetEffect* effect, const uint8_t* id, void** out) {
    (void)effect, (void)id;
    *out = NULL;
    return NO_INTERFACE;
}

METHOD_OF_HOST static uint32_t countReference(PresetEffect* effect) {
    (void)effect;
    return 1;
}

METHOD_OF_HOST static const char* effectName(PresetEffect* effect) {
    return effect->name;
}

METHOD_OF_HOST static const char* libraryName(PresetEffect* effect) {
    (void)effect;
    return "Vantrel Lumiset V";
}

METHOD_OF_HOST static uint32_t paramInfo(PresetEffect* effect, uint32_t index, uint8_t* info) {
    if (index >= PARAM_COUNT) {
        return 0xFFFFFF00;  // the answer is the lowest byte
    }
    memset(info, 0, PARAM_INFO_SIZE);
    putWord(info, PARAM_INFO_TYPE, effect->types[index]);
    return 0xFFFFFF01;
}

METHOD_OF_HOST static void paramValue(PresetEffect* effect, uint32_t index, uint32_t* out, uint32_t type) {
    CHECK(index < PARAM_COUNT && effect->types[index] == type && type != PARAM_GROUP);
    memcpy(out, effect->values[index], sizeof effect->values[index]);
}

static const void* const VTABLE[] = {queryInterface, countReference, countReference, effectName,
                                     libraryName,    paramInfo,      paramValue};

static PresetEffect makeEffect(void) {
    PresetEffect effect = {VTABLE,
                           "Outline",
                           {PARAM_GROUP, PARAM_POINT, PARAM_CHOICE, PARAM_SLIDER, PARAM_COLOR, PARAM_BOOLEAN},
                           {{0}, {floatBits(0.1F), floatBits(0.3F)}, {7}, {floatBits(0.7F)}, {0xFF123456}, {1}}};
    return effect;
}

// The record between bytes that are nobody's.
static uint8_t record[OUTCOME_SIZE + 8];

static int areUntouched(uint32_t begin, uint32_t end) {
    for (uint32_t i = begin; i < end; ++i) {
        if (record[i] != UNTOUCHED) {
            return 0;
        }
    }
    return 1;
}

static int call(uint32_t slot, Word saver, const PresetEffect* effect, const wchar_t* path) {
    memset(record, UNTOUCHED, sizeof record);
    const int done = ASK(slot, saver, 0, WORD(effect), OUTLINE, WORD(path), WORD(record));
    CHECK(areUntouched(OUTCOME_SIZE, sizeof record));
    return done;
}

static int failsWith(uint32_t slot, Word saver, const PresetEffect* effect, const wchar_t* path, uint32_t status) {
    return !call(slot, saver, effect, path) && wordAt(record, OUTCOME_STATUS) == status &&
           areUntouched(OUTCOME_COUNT, OUTCOME_SIZE);
}

static void checkRecord(const PresetEffect* effect) {
    CHECK(wordAt(record, OUTCOME_STATUS) == PRESET_DONE && wordAt(record, OUTCOME_COUNT) == PARAM_COUNT);
    CHECK(strcmp((const char*)record + OUTCOME_NAME, "Contract & host") == 0);
    for (uint32_t i = 0; i < PARAM_COUNT; ++i) {
        const uint32_t entry = OUTCOME_ENTRIES + i * OUTCOME_ENTRY_SIZE;
        CHECK(wordAt(record, entry) == effect->types[i]);
        CHECK(wordAt(record, entry + 4) == effect->values[i][0] && wordAt(record, entry + 8) == effect->values[i][1]);
    }
}

void checkPresetSaver(Word saver) {
    wchar_t folder[MAX_PATH];
    wchar_t path[MAX_PATH + 40];
    wchar_t other[MAX_PATH + 40];
    CHECK(GetTempPathW(MAX_PATH, folder) > 0);
    lstrcatW(lstrcpyW(path, folder), L"Contract & host.lumvc");
    PresetEffect effect = makeEffect();

    about("SavePreset");
    CHECK(call(PRESET_SAVE, saver, &effect, path));
    checkRecord(&effect);
    CHECK(ASK(PRESET_SAVE, saver, 0, WORD(&effect), OUTLINE, WORD(path), 0));  // nobody wants the record

    about("LoadPreset");
    PresetEffect changed = makeEffect();
    memset(changed.values, 0, sizeof changed.values);
    CHECK(call(PRESET_LOAD, saver, &changed, path));
    checkRecord(&effect);
    CHECK(changed.values[3][0] == 0);  // setting values is the host's part
    CHECK(ASK(PRESET_LOAD, saver, 0, WORD(&changed), OUTLINE, WORD(path), 0));

    about("Presets that fail");
    changed.name = "Old TV";
    CHECK(failsWith(PRESET_LOAD, saver, &changed, path, PRESET_MISMATCHED));
    changed.name = "Outline";
    changed.types[5] = PARAM_SLIDER;
    CHECK(failsWith(PRESET_LOAD, saver, &changed, path, PRESET_MISMATCHED));
    CHECK(failsWith(PRESET_LOAD, saver, NULL, path, PRESET_UNREADABLE));
    CHECK(failsWith(PRESET_LOAD, saver, &effect, NULL, PRESET_UNREADABLE));
    CHECK(failsWith(PRESET_SAVE, saver, &effect, NULL, PRESET_NOT_SAVED));
    CHECK(failsWith(PRESET_SAVE, saver, NULL, path, PRESET_NOT_SAVED));
    lstrcatW(lstrcpyW(other, folder), L"no such folder\\a.lumvc");
    CHECK(failsWith(PRESET_LOAD, saver, &effect, other, PRESET_UNREADABLE));
    CHECK(failsWith(PRESET_SAVE, saver, &effect, other, PRESET_NOT_SAVED));
    if (GetACP() != CP_UTF8) {  // a name that the code page does not hold, of a file that is there
        lstrcatW(lstrcpyW(other, folder), L"\x7DD1.lumvc");
        CHECK(CopyFileW(path, other, FALSE));
        CHECK(failsWith(PRESET_LOAD, saver, &effect, other, PRESET_UNREADABLE));
        CHECK(failsWith(PRESET_SAVE, saver, &effect, other, PRESET_NOT_SAVED));
        CHECK(DeleteFileW(other));
    }
    effect.values[3][0] = floatBits(0.2F);
    CHECK(call(PRESET_LOAD, saver, &effect, path));
    CHECK(wordAt(record, OUTCOME_ENTRIES + 3 * OUTCOME_ENTRY_SIZE + 4) == floatBits(0.7F));  // as it was saved
    CHECK(DeleteFileW(path));
}
