/*
 * Lumiset's effects for C, and for every language that calls C.
 *
 *     lumiset_library *library = lumiset_library_open(NULL);
 *     lumiset_look *look = lumiset_look_new(library);
 *     lumiset_look_add(look, "Old TV", "Snow");
 *     lumiset_look_set(look, 0, "Noise", "30");
 *     lumiset_renderer *renderer = lumiset_renderer_new(look, 0.0);
 *     lumiset_render(renderer, &picture, &picture, 1.2);
 *
 * Errors. What can fail answers a status, LUMISET_OK being 0, or a null pointer; `lumiset_error` then has the sentence
 * that tells why. Null handles and pointers are refused in the same way, unless it is said what they mean. A call that
 * fails changes nothing, but for `lumiset_render`, which may have written to its destination.
 *
 * Memory. Handles are given back by their `..._free`, in any order: a library stays as long as something made with it.
 * Texts are UTF-8 and end with a NUL. Those that are handed out belong to the library, or to the handle that is said,
 * and live as long; those that are handed in are copied.
 *
 * Threads. One handle is used by one thread at a time, except that any number of threads may read a library at once:
 * all calls that take `const lumiset_library *`. Different handles are independent, so renderers made from one look may
 * render on many threads at once, each thread with its own. `lumiset_error` is each thread's own.
 *
 * Versions. What is declared here stays as it is; what is new comes in addition and raises LUMISET_API_VERSION. Structs
 * begin with their size, by which the library knows which of their members a caller has.
 */
#ifndef LUMISET_H
#define LUMISET_H

#include <stddef.h>
#include <stdint.h>

#define LUMISET_API_VERSION 1

#ifdef __GNUC__
#define LUMISET_API __attribute__((visibility("default")))
#else
#define LUMISET_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef enum lumiset_status {
    LUMISET_OK = 0,
    LUMISET_BAD_ARGUMENT = 1, /* a null pointer, a number out of range, a picture that is none */
    LUMISET_UNKNOWN_NAME = 2, /* an effect, preset, parameter or value that there is not */
    LUMISET_BAD_FILE = 3,     /* a look or preset file that cannot be read or written, or is not one */
    LUMISET_NO_MODULE = 4,    /* the effects cannot be loaded */
    LUMISET_NOT_RENDERED = 5, /* an effect refused the picture */
    LUMISET_NO_MEMORY = 6,
    LUMISET_FAILED = 7 /* anything else */
} lumiset_status;

/* The sentence for the last call of this thread that failed; "" where none has. Holds until the thread's next call. */
LUMISET_API const char* lumiset_error(void);

/* LUMISET_API_VERSION of the library that is loaded: at least that of the header it is used with. */
LUMISET_API uint32_t lumiset_api_version(void);
/* The version of the effects' release, such as "5.0.0". */
LUMISET_API const char* lumiset_version(void);

/* ---- The library ---- */

typedef struct lumiset_library lumiset_library;

/* Loads the effects from the module at `path`; NULL: the one that LUMISET_MODULE names in the environment, or that is
 * installed beside this library. */
LUMISET_API lumiset_library* lumiset_library_open(const char* path);
LUMISET_API void lumiset_library_free(lumiset_library* library); /* NULL is nothing */
/* Where the module was found. */
LUMISET_API const char* lumiset_library_path(const lumiset_library* library);

/* ---- What effects there are ---- */

typedef enum lumiset_type {
    LUMISET_POINT = 0,  /* "x,y" in percent of the picture from its top left corner */
    LUMISET_CHOICE = 1, /* an item's label, or its number from 0 */
    LUMISET_SLIDER = 2, /* a number from minimum to maximum */
    LUMISET_COLOR = 3,  /* "#RRGGBB" */
    LUMISET_SWITCH = 4  /* "on" or "off" */
} lumiset_type;

typedef struct lumiset_effect {
    size_t size; /* sizeof(lumiset_effect) */
    const char* name;
    uint32_t parameters; /* how many */
    uint32_t presets;    /* how many */
    uint32_t moves;      /* 1: the picture moves with time */
} lumiset_effect;

typedef struct lumiset_parameter {
    size_t size;      /* sizeof(lumiset_parameter) */
    const char* name; /* the shortest by which it is set */
    const char* label;
    const char* group;         /* the boxes around it on a panel, parted by slashes; or "" */
    const char* tip;           /* what it does */
    uint32_t type;             /* a lumiset_type */
    double minimum, maximum;   /* of sliders */
    uint32_t whole_numbers;    /* 1: a slider without decimals */
    uint32_t items;            /* how many, of choices */
    const char* default_value; /* as it is set */
    const char* range;         /* what it takes, in a few words: "0 to 100" */
} lumiset_parameter;

/* How many effects there are; 0 for NULL. */
LUMISET_API uint32_t lumiset_effect_count(const lumiset_library* library);
/* The number of the effect of that name, in any case of letters. */
LUMISET_API lumiset_status lumiset_find_effect(const lumiset_library* library, const char* name, uint32_t* effect);
/* Describe an effect, and one of its parameters, by their numbers from 0. The struct's `size` is to be set before. */
LUMISET_API lumiset_status lumiset_describe_effect(const lumiset_library* library, uint32_t effect,
                                                   lumiset_effect* description);
LUMISET_API lumiset_status lumiset_describe_parameter(const lumiset_library* library, uint32_t effect,
                                                      uint32_t parameter, lumiset_parameter* description);
/* Names of an effect's presets and of a choice's items, by their numbers from 0; NULL beyond the last. */
LUMISET_API const char* lumiset_preset_name(const lumiset_library* library, uint32_t effect, uint32_t preset);
LUMISET_API const char* lumiset_item_name(const lumiset_library* library, uint32_t effect, uint32_t parameter,
                                          uint32_t item);
/* Names of the looks, ours and the user's own as they were when the library was opened; NULL beyond the last. */
LUMISET_API const char* lumiset_look_name(const lumiset_library* library, uint32_t look);

/* ---- Looks: effects in turn, with everything that they are set to ---- */

typedef struct lumiset_look lumiset_look;

/* An empty one, which leaves pictures as they are. */
LUMISET_API lumiset_look* lumiset_look_new(const lumiset_library* library);
/* The look of that name, the user's own before ours; or the file, where it has a slash or ".lumilook" in it. */
LUMISET_API lumiset_look* lumiset_look_open(const lumiset_library* library, const char* name_or_file);
/* The look that a text tells, as files have it. */
LUMISET_API lumiset_look* lumiset_look_parse(const lumiset_library* library, const char* json);
LUMISET_API void lumiset_look_free(lumiset_look* look); /* NULL is nothing */
/* Writes it to a file; one that is there is replaced, whole or not at all. */
LUMISET_API lumiset_status lumiset_look_save(const lumiset_look* look, const char* file);
/* The look as text. It belongs to the look, until the next call with that. */
LUMISET_API const char* lumiset_look_text(lumiset_look* look);

/* Adds an effect behind those that there are, with its defaults or, where `preset` is not NULL, that preset. */
LUMISET_API lumiset_status lumiset_look_add(lumiset_look* look, const char* effect, const char* preset);
/* How many effects it has; 0 for NULL. The calls below take their numbers from 0. */
LUMISET_API uint32_t lumiset_look_effects(const lumiset_look* look);
/* Sets a parameter by its name, which is the label, "Group/Label" or "#" and its number, in any case of letters. The
 * value is text as `lumiset_type` says, or a number: for sliders, for choices' items, and 0 or 1 for switches. */
LUMISET_API lumiset_status lumiset_look_set(lumiset_look* look, uint32_t effect, const char* name, const char* value);
LUMISET_API lumiset_status lumiset_look_set_number(lumiset_look* look, uint32_t effect, const char* name, double value);
/* Adds a key: values run in straight lines from key to key. Switches and choices keep theirs until the next. `time` is
 * in seconds or h:m:s, such as "1.5" or "1:30", or a part of the clip, such as "50%". */
LUMISET_API lumiset_status lumiset_look_key(lumiset_look* look, uint32_t effect, const char* name, const char* time,
                                            const char* value);
/* Takes the values of a preset file over, as far as they are not the defaults. */
LUMISET_API lumiset_status lumiset_look_load_preset(lumiset_look* look, uint32_t effect, const char* file);
/* How much of an effect shows, or of the whole look, in percent from 0 to 100. */
LUMISET_API lumiset_status lumiset_look_effect_strength(lumiset_look* look, uint32_t effect, double percent);
/* Leaves an effect out where `off` is not 0, but keeps it in the look. */
LUMISET_API lumiset_status lumiset_look_effect_off(lumiset_look* look, uint32_t effect, int off);
LUMISET_API lumiset_status lumiset_look_strength(lumiset_look* look, double percent);
/* Where the look shows: width * height values of 0 (nowhere) to 1, rows from the top, stretched over each picture. They
 * are copied. NULL: everywhere. */
LUMISET_API lumiset_status lumiset_look_mask(lumiset_look* look, const float* values, int32_t width, int32_t height);

/* ---- Rendering ---- */

typedef enum lumiset_samples {
    LUMISET_UINT8 = 0,
    LUMISET_UINT16 = 1, /* in the machine's byte order */
    LUMISET_FLOAT = 2   /* 0.0 to 1.0 */
} lumiset_samples;

/* A picture in the caller's memory, its channels interleaved, alpha straight. Effects work in BGRA and ARGB of bytes or
 * aligned floats as they lie; everything else is converted on the way. */
typedef struct lumiset_picture {
    size_t size; /* sizeof(lumiset_picture) */
    void* data;  /* the pixel at the top left */
    int32_t width;
    int32_t height;
    ptrdiff_t stride; /* bytes from a row to the one below it; negative where that comes before; 0: rows follow */
    uint32_t samples; /* a lumiset_samples */
    /* "RGBA", "BGRA", "ARGB", "ABGR", "RGB" or "BGR". Without alpha a picture is opaque, and takes what is drawn into
     * it over black. */
    const char* order;
} lumiset_picture;

/* What is known of a frame beside its time. 0 everywhere: nothing. */
typedef struct lumiset_frame {
    size_t size;          /* sizeof(lumiset_frame) */
    double pixel_aspect;  /* width of a pixel divided by its height; 0: not known, taken for square */
    double duration;      /* of the frame in seconds; the second field comes half of it later */
    uint32_t field_order; /* 0: a whole frame; 1: interlaced, the top field first; 2: the bottom field first */
} lumiset_frame;

/* A look made ready; one that is changed later is left out of account. One for each thread that renders. */
typedef struct lumiset_renderer lumiset_renderer;

/* `clip_seconds` is only needed where keys stand at parts of the clip; 0: not known. */
LUMISET_API lumiset_renderer* lumiset_renderer_new(const lumiset_look* look, double clip_seconds);
/* Looks in turn, each with its mask. */
LUMISET_API lumiset_renderer* lumiset_renderer_new_chain(const lumiset_look* const* looks, size_t count,
                                                         double clip_seconds);
LUMISET_API void lumiset_renderer_free(lumiset_renderer* renderer); /* NULL is nothing */
/* Renders `source`, which is only read, to `destination`, of the same size and any layout; they may be one picture.
 * `seconds` counts from the clip's start, from 0 on. Large pictures are rendered on several threads, as many as the
 * machine has or LUMISET_THREADS in the environment allows. */
LUMISET_API lumiset_status lumiset_render(lumiset_renderer* renderer, const lumiset_picture* source,
                                          const lumiset_picture* destination, double seconds);
/* The same with what else is known of the frame; NULL: nothing. */
LUMISET_API lumiset_status lumiset_render_frame(lumiset_renderer* renderer, const lumiset_picture* source,
                                                const lumiset_picture* destination, double seconds,
                                                const lumiset_frame* frame);

#ifdef __cplusplus
}
#endif

#endif
