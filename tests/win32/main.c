// A host in plain C: loads the module by name, knows it by vtable slots, byte offsets and identifiers alone, and does
// so with every alignment of the stack that a caller can have.

#include <windows.h>

#include <stdio.h>
#include <string.h>

#include "call.h"
#include "contract.h"
#include "suites.h"

static const struct {
    const char* name;
    uint32_t flags;
} EFFECTS[] = {
    {"Progressive Stretch", 961}, {"Background Generator", 17349}, {"Outline", 965},      {"Selective Focus", 961},
    {"Selective Tint", 961},      {"Color Fixer Pro", 961},        {"Viewfinder", 17349}, {"Old TV", 17349},
    {"Selective Color", 961},     {"Alpha Processor", 965},
};
enum { EFFECT_COUNT = sizeof EFFECTS / sizeof EFFECTS[0], OUTLINE = 2 };

void checkUnknown(Word object, const uint8_t* interfaceId, uint32_t statusForNull) {
    const uint8_t* const known[] = {ID_UNKNOWN, interfaceId};
    Word out = 0;
    for (int i = 0; i < 2; ++i) {
        CHECK(METHOD(QUERY_INTERFACE, object, WORD(known[i]), WORD(&out)) == 0 && out == object);
    }
    CHECK(METHOD(ADD_REF, object) == 4);
    for (uint32_t left = 4; left-- > 1;) {
        CHECK(METHOD(RELEASE, object) == left);
    }
    CHECK(METHOD(QUERY_INTERFACE, object, WORD(ID_STRANGER), WORD(&out)) == NO_INTERFACE && out == 0);
    CHECK(METHOD(QUERY_INTERFACE, object, WORD(ID_UNKNOWN), 0) == statusForNull);
}

static void checkEffects(Word library) {
    for (uint32_t index = 0; index < EFFECT_COUNT; ++index) {
        about("%s", EFFECTS[index].name);
        const Word effect = ADDRESS(LIBRARY_CREATE_EFFECT, library, index);
        CHECK(effect != 0);
        if (effect == 0) {
            continue;
        }
        CHECK(strcmp(NAME(EFFECT_NAME, effect), EFFECTS[index].name) == 0);
        CHECK(METHOD(EFFECT_FLAGS, effect) == EFFECTS[index].flags);
        checkEffect(effect);
        if (index == OUTLINE) {
            checkOutline(effect);
        }
        about("%s", EFFECTS[index].name);
        CHECK(METHOD(RELEASE, effect) == 0);
    }
    about("Effects past the last");
    uint32_t count = EFFECT_COUNT;  // later effects stand behind these
    for (Word effect; (effect = ADDRESS(LIBRARY_CREATE_EFFECT, library, count)) != 0; ++count) {
        checkEffect(effect);
        CHECK(METHOD(RELEASE, effect) == 0);
    }
    CHECK(ADDRESS(LIBRARY_CREATE_EFFECT, library, 0xFFFFFFFF) == 0);
}

static void checkLibrary(Word library) {
    about("Library");
    CHECK(strcmp(NAME(LIBRARY_NAME, library), "Vantrel Lumiset V") == 0);
    checkUnknown(library, ID_EFFECT_LIBRARY, NO_INTERFACE);
    CHECK(METHOD(LIBRARY_QUERY, library, 1, 2) == 0);

    about("Host services");
    const Word services = ADDRESS(LIBRARY_HOST_SERVICES, library);
    CHECK(services != 0 && ADDRESS(LIBRARY_HOST_SERVICES, library) == services);
    METHOD(RELEASE, services);
    METHOD(RELEASE, services);

    const Word processor = ADDRESS(LIBRARY_CREATE_FRAME_PROCESSOR, library);
    CHECK(processor != 0);
    checkFrameProcessor(processor);
    about("Frame processor");
    CHECK(METHOD(RELEASE, processor) == 0);

    about("Preset saver");
    const Word saver = ADDRESS(LIBRARY_CREATE_PRESET_SAVER, library);
    CHECK(saver != 0);
    if (saver != 0) {
        checkUnknown(saver, ID_PRESET_SAVER, FAILURE);
        checkPresetSaver(saver);
        about("Preset saver");
        CHECK(METHOD(RELEASE, saver) == 0);
    }
    checkEffects(library);
}

static void checkVersion(HMODULE module) {
    about("Version resource");
    char path[MAX_PATH];
    CHECK(GetModuleFileNameA(module, path, sizeof path) > 0);
    static uint8_t block[4096];
    CHECK(GetFileVersionInfoSizeA(path, NULL) <= sizeof block);
    CHECK(GetFileVersionInfoA(path, 0, sizeof block, block));
    void* value = NULL;
    UINT size = 0;
    CHECK(VerQueryValueA(block, "\\", &value, &size) && ((VS_FIXEDFILEINFO*)value)->dwFileVersionMS == 0x00050000);
    CHECK(VerQueryValueA(block, "\\StringFileInfo\\040904B0\\OriginalFilename", &value, &size) &&
          strcmp(value, "vantrel_lumiset5.dll") == 0);
}

static void checkModule(const char* name) {
    typedef void (*Export)(void);
    about("Exports");
    HMODULE module = LoadLibraryA(name);
    CHECK(module != NULL);
    if (module == NULL) {
        return;
    }
    const Export getLibrary = (Export)(void*)GetProcAddress(module, "GetEffectsLibrary");
    const Export canUnload = (Export)(void*)GetProcAddress(module, "CanUnloadDLLNow");
    const Export promotion = (Export)(void*)GetProcAddress(module, "DisplayPromotionW");
    CHECK(getLibrary != NULL && canUnload != NULL && promotion != NULL);
    if (getLibrary != NULL && canUnload != NULL && promotion != NULL) {
        CHECK(callExport(canUnload) == 1);
        CHECK(callExport(promotion) == 0);
        const Word library = callExport(getLibrary);
        const Word second = callExport(getLibrary);
        CHECK(library != 0 && second != 0 && library != second);
        CHECK(METHOD(RELEASE, second) == 0);
        checkLibrary(library);
        about("Unloading");
        CHECK(callExport(canUnload) == 1);  // objects alive or not
        CHECK(METHOD(RELEASE, library) == 0);
    }
    checkVersion(module);
    about("Unloading");
    CHECK(FreeLibrary(module));
    CHECK(GetModuleHandleA(name) == NULL);
}

int main(int argc, char** argv) {
    setvbuf(stdout, NULL, _IONBF, 0);
    const char* name = argc > 1 ? argv[1] : "vantrel_lumiset5.dll";
    for (uint32_t offset = 0; offset < 4 * STACK_STEP; offset += STACK_STEP) {
        const int before = checksFailed();
        setStackOffset(offset);
        checkModule(name);
        printf("stack %u bytes past a multiple of %d: %d failed\n", offset, 4 * STACK_STEP, checksFailed() - before);
    }
    printf("%d checks, %d failed\n", checksRun(), checksFailed());
    return checksFailed() == 0 ? 0 : 1;
}
