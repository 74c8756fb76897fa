#pragma once

// The binary contract as a Windows host of either width knows it: offsets, sizes, vtable slots and identifiers, written
// down independently of the module's headers. Plain C, so that nothing here depends on how a compiler lays out classes.

#include <stdint.h>

enum {
    ADDRESS_SIZE = sizeof(void*),  // 4 in the contract; 8 with the same records and slots

    PARAM_INFO_SIZE = 276,
    PARAM_INFO_DEFAULT = 0,
    PARAM_INFO_TYPE = 8,
    PARAM_INFO_MINIMUM = 12,   // sliders; choices: number of items; groups: one byte, 1 closes
    PARAM_INFO_MAXIMUM = 16,   // sliders
    PARAM_INFO_DECIMALS = 20,  // sliders
    PARAM_INFO_ITEMS = 16,     // choices: ten texts
    PARAM_INFO_ITEM_SIZE = 20,
    PARAM_INFO_LABEL = 216,    // 40 bytes
    PARAM_INFO_RECT = 256,     // four words
    PARAM_INFO_VISIBLE = 272,  // one byte
    PARAM_POINT = 0,
    PARAM_CHOICE = 1,
    PARAM_SLIDER = 2,
    PARAM_COLOR = 3,
    PARAM_BOOLEAN = 4,
    PARAM_GROUP = 5,

    FRAME_SIZE = ADDRESS_SIZE + 32,
    FRAME_DATA = 0,
    FRAME_WIDTH = ADDRESS_SIZE,
    FRAME_HEIGHT = ADDRESS_SIZE + 4,
    FRAME_STRIDE = ADDRESS_SIZE + 8,
    FRAME_BYTES_PER_PIXEL = ADDRESS_SIZE + 12,
    FRAME_FORMAT = ADDRESS_SIZE + 24,
    FRAME_FLIPPED = ADDRESS_SIZE + 28,

    TEXTURE_SIZE = ADDRESS_SIZE + 32,
    TEXTURE_HANDLE = 0,
    TEXTURE_FORMAT = ADDRESS_SIZE,
    TEXTURE_WIDTH = ADDRESS_SIZE + 12,
    TEXTURE_HEIGHT = ADDRESS_SIZE + 16,
    TEXTURE_FLIPPED = ADDRESS_SIZE + 28,

    OUTCOME_SIZE = 1032,
    OUTCOME_STATUS = 0,
    OUTCOME_COUNT = 4,
    OUTCOME_NAME = 8,  // 256 bytes
    OUTCOME_ENTRIES = 264,
    OUTCOME_ENTRY_SIZE = 12,  // type, two words of value
    PRESET_DONE = 0,
    PRESET_UNREADABLE = 2,
    PRESET_MISMATCHED = 3,
    PRESET_NOT_SAVED = 4,

    INFO_SIZE = 56,
    INFO_FLAGS = 4,
    INFO_TIME = 16,          // double
    INFO_PIXEL_ASPECT = 40,  // double
    INFO_FIELD = 52,         // 16 bits
    INFO_HAS_FIELD = 0x20,
    INFO_HAS_PIXEL_ASPECT = 0x40,
    INFO_WHOLE_FRAME = 3,
};

// Vtable slots.
enum {
    QUERY_INTERFACE = 0,
    ADD_REF = 1,
    RELEASE = 2,

    LIBRARY_NAME = 3,
    LIBRARY_CREATE_EFFECT = 4,
    LIBRARY_QUERY = 5,
    LIBRARY_HOST_SERVICES = 6,
    LIBRARY_CREATE_FRAME_PROCESSOR = 7,
    LIBRARY_CREATE_PRESET_SAVER = 8,

    EFFECT_NAME = 3,
    EFFECT_FLAGS = 4,
    EFFECT_PARAM_INFO = 5,
    EFFECT_PROCESS_FRAME = 6,
    EFFECT_PRESET_NAME = 7,
    EFFECT_PRESET_VALUE = 8,
    EFFECT_INIT_GPU = 9,
    EFFECT_PROCESS_FRAME_GPU = 10,
    EFFECT_LOAD_GPU_PROGRAMS = 11,
    EFFECT_RENDER_FRAME_GPU = 12,

    TOOL_TIP_TEXT = 3,

    PROCESSOR_COPY_IMAGE = 3,
    PROCESSOR_RESIZE_IMAGE = 4,
    PROCESSOR_SWAP_CHANNEL_ORDER = 5,
    PROCESSOR_YUV422_TO_BGRA = 6,
    PROCESSOR_BGRA_TO_YUV422 = 7,
    PROCESSOR_SET_CHANNEL = 8,
    PROCESSOR_ALPHA_OVER = 9,
    PROCESSOR_SWAP_CHANNELS = 10,
    PROCESSOR_PREMULTIPLY_ALPHA = 11,
    PROCESSOR_YUV_TO_COLOR = 12,
    PROCESSOR_COLOR_TO_YUV = 13,
    PROCESSOR_FLIP_VERTICAL = 14,
    PROCESSOR_FLIP_VERTICAL_COPY = 15,
    PROCESSOR_COPY_CHANNEL = 16,
    PROCESSOR_INVERT_CHANNEL = 17,
    PROCESSOR_SQUARE_SAMPLES = 18,
    PROCESSOR_SQUARE_ROOT_SAMPLES = 19,
    PROCESSOR_LIMIT_SAMPLES = 20,
    PROCESSOR_DESTRUCTOR = 21,
    PROCESSOR_RESIZE_REGION = 22,

    PRESET_LOAD = 3,
    PRESET_SAVE = 4,
    PRESET_DESTRUCTOR = 5,

    HOST_PARAM_VALUE = 3,
    HOST_NAME = 8,

    ALLOCATOR_ALLOC_BYTES = 3,
    ALLOCATOR_FREE_BYTES = 4,
    ALLOCATOR_ALLOC_IMAGE = 5,
    ALLOCATOR_FREE_IMAGE = 6,
};

#define NO_INTERFACE 0x80004002u
#define FAILURE 0x80004005u

// Interface identifiers, as they lie in memory.
typedef uint8_t Identifier[16];
extern const Identifier ID_UNKNOWN;
extern const Identifier ID_EFFECT_LIBRARY;
extern const Identifier ID_VIDEO_EFFECT;
extern const Identifier ID_VIDEO_GPU_EFFECT;
extern const Identifier ID_PARAM_TOOL_TIP;
extern const Identifier ID_FRAME_PROCESSOR;
extern const Identifier ID_PRESET_SAVER;
extern const Identifier ID_HOST_ALLOCATOR;
extern const Identifier ID_HOST_PARALLEL;
extern const Identifier ID_STRANGER;  // nobody's
