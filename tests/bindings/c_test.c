/* The C interface from C: what it tells, what it renders, what it refuses, and on threads. The first argument is the
 * module's file, the second a folder to write in. Prints what is wrong; exits with how many faults there were. */

#include <lumiset.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

static int s_faults;

#define CHECK(what)                                                         \
    do {                                                                    \
        if (!(what)) {                                                      \
            printf("line %d: %s (%s)\n", __LINE__, #what, lumiset_error()); \
            ++s_faults;                                                     \
        }                                                                   \
    } while (0)

/* Refused with that status and a sentence that has the words in it. */
#define REFUSES(status, words, call)                                                      \
    do {                                                                                  \
        lumiset_status is = (call);                                                       \
        if (is != (status) || strstr(lumiset_error(), words) == NULL) {                   \
            printf("line %d: %s is %d: %s\n", __LINE__, #call, (int)is, lumiset_error()); \
            ++s_faults;                                                                   \
        }                                                                                 \
    } while (0)
#define REFUSES_HANDLE(words, call)                                        \
    do {                                                                   \
        if ((call) != NULL || strstr(lumiset_error(), words) == NULL) {    \
            printf("line %d: %s: %s\n", __LINE__, #call, lumiset_error()); \
            ++s_faults;                                                    \
        }                                                                  \
    } while (0)

enum { kWidth = 64, kHeight = 40, kPixels = kWidth * kHeight };

static lumiset_picture pictureOf(void* data, uint32_t samples, const char* order) {
    lumiset_picture picture;
    picture.size = sizeof picture;
    picture.data = data;
    picture.width = kWidth;
    picture.height = kHeight;
    picture.stride = 0;
    picture.samples = samples;
    picture.order = order;
    return picture;
}

/* Something with edges, colours and transparency. */
static void draw(uint8_t* rgba) {
    for (int i = 0; i < kPixels; ++i) {
        int x = i % kWidth;
        int y = i / kWidth;
        rgba[4 * i] = (uint8_t)(4 * x);
        rgba[4 * i + 1] = (uint8_t)(6 * y);
        rgba[4 * i + 2] = (uint8_t)(x > 20 && y > 10 ? 230 : 20);
        rgba[4 * i + 3] = (uint8_t)(x > 10 && x < 50 ? 255 : 0);
    }
}

static void describes(const lumiset_library* library) {
    lumiset_effect effect = {sizeof effect, NULL, 0, 0, 0};
    lumiset_parameter parameter;
    uint32_t number = 99;
    uint32_t snow = 0;
    memset(&parameter, 0, sizeof parameter);
    parameter.size = sizeof parameter;
    CHECK(lumiset_api_version() == LUMISET_API_VERSION);
    CHECK(strncmp(lumiset_version(), "5.", 2) == 0);
    CHECK(lumiset_effect_count(library) == 10);
    CHECK(lumiset_find_effect(library, "old tv", &number) == LUMISET_OK);
    CHECK(lumiset_describe_effect(library, number, &effect) == LUMISET_OK);
    CHECK(strcmp(effect.name, "Old TV") == 0 && effect.parameters == 20 && effect.presets == 12 && effect.moves == 1);
    while (lumiset_preset_name(library, number, snow) != NULL &&
           strcmp(lumiset_preset_name(library, number, snow), "Snow") != 0) {
        ++snow;
    }
    CHECK(snow < effect.presets);
    CHECK(lumiset_preset_name(library, number, effect.presets) == NULL);
    CHECK(lumiset_describe_parameter(library, number, 0, &parameter) == LUMISET_OK);
    CHECK(strcmp(parameter.name, "Noise") == 0 && strcmp(parameter.group, "Video Quality") == 0);
    CHECK(parameter.type == LUMISET_SLIDER && parameter.minimum == 0.0 && parameter.maximum == 100.0);
    CHECK(strcmp(parameter.range, "0 to 100") == 0 && parameter.tip[0] != '\0');
    CHECK(lumiset_find_effect(library, "Selective Tint", &number) == LUMISET_OK);
    CHECK(lumiset_describe_parameter(library, number, 13, &parameter) == LUMISET_OK);
    CHECK(parameter.type == LUMISET_CHOICE && parameter.items == 10);
    CHECK(strcmp(lumiset_item_name(library, number, 13, 0), parameter.default_value) == 0);
    CHECK(lumiset_item_name(library, number, 13, 10) == NULL);
    CHECK(strcmp(lumiset_look_name(library, 0), "") != 0 && lumiset_look_name(library, 1000) == NULL);
}

static void refuses(const char* module, const lumiset_library* library) {
    uint8_t pixels[4 * kPixels] = {0};
    lumiset_picture picture = pictureOf(pixels, LUMISET_UINT8, "RGBA");
    lumiset_picture wrong;
    lumiset_effect effect = {sizeof effect, NULL, 0, 0, 0};
    lumiset_frame frame = {sizeof frame, 0.0, 0.0, 3};
    lumiset_look* look = lumiset_look_new(library);
    lumiset_renderer* renderer = lumiset_renderer_new(look, 0.0);
    const lumiset_look* looks[2] = {NULL, NULL};
    uint32_t number = 0;
    char longName[5000];

    REFUSES_HANDLE("no effects module at", lumiset_library_open("/nowhere/module.so"));
    REFUSES_HANDLE("null", lumiset_library_path(NULL));
    REFUSES_HANDLE("a library", lumiset_look_new(NULL));
    REFUSES_HANDLE("a look", lumiset_renderer_new(NULL, 0.0));
    REFUSES_HANDLE("one look or more", lumiset_renderer_new_chain(NULL, 1, 0.0));
    REFUSES_HANDLE("one look or more", lumiset_renderer_new_chain(looks, 0, 0.0));
    REFUSES_HANDLE("a look", lumiset_renderer_new_chain(looks, 2, 0.0));
    REFUSES_HANDLE("length of a clip", lumiset_renderer_new(look, -1.0));
    REFUSES_HANDLE("a text", lumiset_look_parse(library, NULL));
    REFUSES_HANDLE("JSON", lumiset_look_parse(library, "{"));
    REFUSES_HANDLE("look", lumiset_look_open(library, "No Such Look"));
    REFUSES_HANDLE("a look", lumiset_look_text(NULL));
    CHECK(lumiset_effect_count(NULL) == 0 && lumiset_look_effects(NULL) == 0);
    lumiset_library_free(NULL);
    lumiset_look_free(NULL);
    lumiset_renderer_free(NULL);

    REFUSES(LUMISET_BAD_ARGUMENT, "an effect's name", lumiset_find_effect(library, NULL, &number));
    REFUSES(LUMISET_BAD_ARGUMENT, "place", lumiset_find_effect(library, "Outline", NULL));
    REFUSES(LUMISET_UNKNOWN_NAME, "Did you mean \"Outline\"?", lumiset_find_effect(library, "Outlin", &number));
    REFUSES(LUMISET_BAD_ARGUMENT, "no effect number 10 of 10", lumiset_describe_effect(library, 10, &effect));
    effect.size = 4;
    REFUSES(LUMISET_BAD_ARGUMENT, "size", lumiset_describe_effect(library, 0, &effect));
    CHECK(effect.name == NULL);
    REFUSES(LUMISET_BAD_ARGUMENT, "null", lumiset_describe_parameter(library, 0, 0, NULL));

    REFUSES(LUMISET_UNKNOWN_NAME, "There is no effect", lumiset_look_add(look, "", NULL));
    REFUSES(LUMISET_UNKNOWN_NAME, "no preset", lumiset_look_add(look, "Old TV", "Red Glow"));
    CHECK(lumiset_look_effects(look) == 0);
    CHECK(lumiset_look_add(look, "Old TV", NULL) == LUMISET_OK);
    REFUSES(LUMISET_BAD_ARGUMENT, "no effect number 1 of 1", lumiset_look_set(look, 1, "Noise", "1"));
    REFUSES(LUMISET_BAD_ARGUMENT, "null", lumiset_look_set(look, 0, NULL, "1"));
    REFUSES(LUMISET_BAD_ARGUMENT, "null", lumiset_look_set(look, 0, "Noise", NULL));
    REFUSES(LUMISET_BAD_ARGUMENT, "a look", lumiset_look_set(NULL, 0, "Noise", "1"));
    REFUSES(LUMISET_UNKNOWN_NAME, "0 to 100", lumiset_look_set(look, 0, "Noise", "101"));
    REFUSES(LUMISET_UNKNOWN_NAME, "Did you mean", lumiset_look_set(look, 0, "Nois", "1"));
    REFUSES(LUMISET_UNKNOWN_NAME, "0 to 100", lumiset_look_set_number(look, 0, "Noise", -1.0 / 0.0));
    REFUSES(LUMISET_BAD_ARGUMENT, "no time", lumiset_look_key(look, 0, "Noise", "later", "1"));
    REFUSES(LUMISET_BAD_ARGUMENT, "0 to 100", lumiset_look_strength(look, 0.0 / 0.0));
    REFUSES(LUMISET_BAD_ARGUMENT, "0 to 100", lumiset_look_effect_strength(look, 0, 101.0));
    REFUSES(LUMISET_BAD_ARGUMENT, "mask", lumiset_look_mask(look, (const float*)(const void*)pixels, 0, 4));
    REFUSES(LUMISET_BAD_FILE, "cannot be read", lumiset_look_load_preset(look, 0, "/nowhere/preset.lumvh"));
    REFUSES(LUMISET_BAD_FILE, "", lumiset_look_save(look, "/nowhere/look.lumilook"));
    memset(longName, 'x', sizeof longName - 1);
    longName[sizeof longName - 1] = '\0';
    REFUSES(LUMISET_UNKNOWN_NAME, "no parameter", lumiset_look_set(look, 0, longName, "1"));
    CHECK(lumiset_look_key(look, 0, "Noise", "50%", "1") == LUMISET_OK);
    REFUSES_HANDLE("length", lumiset_renderer_new(look, 0.0));

    REFUSES(LUMISET_BAD_ARGUMENT, "a renderer", lumiset_render(NULL, &picture, &picture, 0.0));
    REFUSES(LUMISET_BAD_ARGUMENT, "null", lumiset_render(renderer, NULL, &picture, 0.0));
    REFUSES(LUMISET_BAD_ARGUMENT, "from 0 on", lumiset_render(renderer, &picture, &picture, -1.0));
    REFUSES(LUMISET_BAD_ARGUMENT, "field order", lumiset_render_frame(renderer, &picture, &picture, 0.0, &frame));
#define REFUSES_PICTURE(words, member, value)                                              \
    wrong = picture;                                                                       \
    wrong.member = value;                                                                  \
    REFUSES(LUMISET_BAD_ARGUMENT, words, lumiset_render(renderer, &picture, &wrong, 0.0)); \
    REFUSES(LUMISET_BAD_ARGUMENT, words, lumiset_render(renderer, &wrong, &picture, 0.0))
    REFUSES_PICTURE("size", size, 0);
    REFUSES_PICTURE("memory", data, NULL);
    REFUSES_PICTURE("from 1 on", width, -5);
    REFUSES_PICTURE("one size", height, kHeight - 1);
    REFUSES_PICTURE("at least 256 bytes", stride, 255);
    REFUSES_PICTURE("at least 256 bytes", stride, -255);
    REFUSES_PICTURE("samples", samples, 77);
    REFUSES_PICTURE("order", order, "RGBX");
    REFUSES_PICTURE("null", order, NULL);
    lumiset_renderer_free(renderer);
    lumiset_look_free(look);

    {
        lumiset_library* other = lumiset_library_open(module);
        lumiset_look* here = lumiset_look_new(library);
        lumiset_look* there = lumiset_look_new(other);
        const lumiset_look* both[2];
        both[0] = here;
        both[1] = there;
        REFUSES_HANDLE("one library", lumiset_renderer_new_chain(both, 2, 0.0));
        lumiset_look_free(here);
        lumiset_look_free(there);
        lumiset_library_free(other);
    }
}

/* A handle that is given back early leaves those that were made with it as they are. */
static void outlives(const char* module) {
    uint8_t rgba[4 * kPixels];
    lumiset_picture picture = pictureOf(rgba, LUMISET_UINT8, "RGBA");
    lumiset_library* library = lumiset_library_open(module);
    lumiset_look* look = lumiset_look_open(library, "Home Video 1986");
    lumiset_renderer* renderer;
    CHECK(strcmp(lumiset_library_path(library), module) == 0);
    lumiset_library_free(library);
    renderer = lumiset_renderer_new(look, 0.0);
    lumiset_look_free(look);
    draw(rgba);
    CHECK(lumiset_render(renderer, &picture, &picture, 1.0) == LUMISET_OK);
    lumiset_renderer_free(renderer);
}

/* Every layout renders the same picture, in place and beside, and a look saved, read and masked does what it says. */
static void renders(const lumiset_library* library, const char* folder) {
    static uint8_t source[4 * kPixels], wanted[4 * kPixels], bytes[4 * kPixels], half[4 * kPixels];
    static float reals[4 * kPixels];
    float mask[2] = {0.0F, 0.0F};
    char file[600];
    lumiset_picture from = pictureOf(source, LUMISET_UINT8, "RGBA");
    lumiset_picture to = pictureOf(wanted, LUMISET_UINT8, "RGBA");
    lumiset_frame frame = {sizeof frame, 1.5, 0.04, 1};
    lumiset_look* look = lumiset_look_new(library);
    lumiset_look* read;
    lumiset_renderer* renderer;
    int different = 0;
    draw(source);
    CHECK(lumiset_look_add(look, "Old TV", "Snow") == LUMISET_OK);
    CHECK(lumiset_look_set(look, 0, "noise", "30") == LUMISET_OK);
    CHECK(lumiset_look_set_number(look, 0, "Vertical Blank", 0) == LUMISET_OK);
    CHECK(lumiset_look_add(look, "Color Fixer Pro", "Sepia") == LUMISET_OK);
    CHECK(lumiset_look_key(look, 1, "Brightness", "0:01", "40") == LUMISET_OK);
    CHECK(lumiset_look_key(look, 1, "Brightness", "100%", "80") == LUMISET_OK);
    CHECK(lumiset_look_effect_strength(look, 1, 60.0) == LUMISET_OK);
    renderer = lumiset_renderer_new(look, 3.0);
    CHECK(lumiset_render(renderer, &from, &to, 2.0) == LUMISET_OK);
    CHECK(memcmp(source, wanted, sizeof wanted) != 0);

    /* In place, upside down in memory, in the order that needs no copy. */
    for (int i = 0; i < kPixels; ++i) {
        uint8_t* pixel = bytes + 4 * (kWidth * (kHeight - 1 - i / kWidth) + i % kWidth);
        pixel[0] = source[4 * i + 2];
        pixel[1] = source[4 * i + 1];
        pixel[2] = source[4 * i];
        pixel[3] = source[4 * i + 3];
    }
    to = pictureOf(bytes + 4 * kWidth * (kHeight - 1), LUMISET_UINT8, "BGRA");
    to.stride = -4 * kWidth;
    CHECK(lumiset_render(renderer, &to, &to, 2.0) == LUMISET_OK);
    for (int i = 0; i < kPixels; ++i) {
        const uint8_t* pixel = bytes + 4 * (kWidth * (kHeight - 1 - i / kWidth) + i % kWidth);
        different += pixel[0] != wanted[4 * i + 2] || pixel[1] != wanted[4 * i + 1] || pixel[2] != wanted[4 * i] ||
                     pixel[3] != wanted[4 * i + 3];
    }
    CHECK(different == 0);
    /* In floats, which differ by the noise of fewer bits alone. */
    to = pictureOf(reals, LUMISET_FLOAT, "ARGB");
    CHECK(lumiset_render(renderer, &from, &to, 2.0) == LUMISET_OK);
    CHECK(reals[0] == (float)wanted[3] / 255.0F);
    CHECK(lumiset_render_frame(renderer, &from, &to, 2.0, &frame) == LUMISET_OK);
    lumiset_renderer_free(renderer);

    /* Through a file, and a text. */
    snprintf(file, sizeof file, "%s/c_test.lumilook", folder);
    CHECK(lumiset_look_save(look, file) == LUMISET_OK);
    read = lumiset_look_open(library, file);
    CHECK(read != NULL && strcmp(lumiset_look_text(read), lumiset_look_text(look)) == 0);
    lumiset_look_free(look);
    look = lumiset_look_parse(library, lumiset_look_text(read));
    lumiset_look_free(read);
    to = pictureOf(bytes, LUMISET_UINT8, "RGBA");
    renderer = lumiset_renderer_new(look, 3.0);
    CHECK(lumiset_render(renderer, &from, &to, 2.0) == LUMISET_OK);
    CHECK(memcmp(bytes, wanted, sizeof wanted) == 0);
    lumiset_renderer_free(renderer);

    /* Half of it; and nowhere. */
    CHECK(lumiset_look_strength(look, 50.0) == LUMISET_OK);
    renderer = lumiset_renderer_new(look, 3.0);
    to = pictureOf(half, LUMISET_UINT8, "RGBA");
    CHECK(lumiset_render(renderer, &from, &to, 2.0) == LUMISET_OK);
    CHECK(memcmp(half, wanted, sizeof half) != 0 && memcmp(half, source, sizeof half) != 0);
    CHECK(lumiset_look_mask(look, mask, 2, 1) == LUMISET_OK);
    lumiset_renderer_free(renderer);
    renderer = lumiset_renderer_new(look, 3.0);
    CHECK(lumiset_render(renderer, &from, &to, 2.0) == LUMISET_OK);
    CHECK(memcmp(half, source, sizeof half) == 0);
    lumiset_renderer_free(renderer);
    /* Without its mask, but with its effects left out. */
    CHECK(lumiset_look_mask(look, NULL, 0, 0) == LUMISET_OK);
    CHECK(lumiset_look_effect_off(look, 0, 1) == LUMISET_OK && lumiset_look_effect_off(look, 1, 1) == LUMISET_OK);
    memset(half, 0, sizeof half);
    renderer = lumiset_renderer_new(look, 3.0);
    lumiset_look_free(look);
    CHECK(lumiset_render(renderer, &from, &to, 2.0) == LUMISET_OK);
    CHECK(memcmp(half, source, sizeof half) == 0);
    lumiset_renderer_free(renderer);
}

struct Job {
    const lumiset_library* effects;
    const lumiset_look* look;
    uint8_t result[4 * kPixels];
    int done;
    char error[200];
};

static void* work(void* context) {
    struct Job* job = (struct Job*)context;
    lumiset_renderer* renderer = lumiset_renderer_new(job->look, 0.0);
    lumiset_picture to = pictureOf(job->result, LUMISET_UINT8, "BGRA");
    uint32_t number;
    job->done = 1;
    for (int i = 0; i < 20; ++i) {
        draw(job->result);
        job->done = lumiset_render(renderer, &to, &to, 1.0) == LUMISET_OK && job->done;
        job->done = lumiset_find_effect(job->effects, "Outline", &number) == LUMISET_OK && job->done;
    }
    lumiset_find_effect(job->effects, "Nothing", &number);
    snprintf(job->error, sizeof job->error, "%s", lumiset_error());
    lumiset_renderer_free(renderer);
    return NULL;
}

static void rendersOnThreads(const lumiset_library* library) {
    static struct Job jobs[4];
    pthread_t threads[4];
    lumiset_look* look = lumiset_look_open(library, "Home Video 1986");
    uint32_t number;
    CHECK(lumiset_find_effect(library, "Outlines", &number) == LUMISET_UNKNOWN_NAME);
    for (int i = 0; i < 4; ++i) {
        jobs[i].effects = library;
        jobs[i].look = look;
        CHECK(pthread_create(&threads[i], NULL, work, &jobs[i]) == 0);
    }
    for (int i = 0; i < 4; ++i) {
        pthread_join(threads[i], NULL);
        CHECK(jobs[i].done && memcmp(jobs[i].result, jobs[0].result, sizeof jobs[0].result) == 0);
        CHECK(strstr(jobs[i].error, "\"Nothing\"") != NULL);
    }
    CHECK(strstr(lumiset_error(), "\"Outlines\"") != NULL); /* each thread's own */
    lumiset_look_free(look);
}

int main(int count, char** words) {
    lumiset_library* library;
    if (count != 3) {
        return 2;
    }
    library = lumiset_library_open(words[1]);
    CHECK(library != NULL);
    describes(library);
    refuses(words[1], library);
    outlives(words[1]);
    renders(library, words[2]);
    rendersOnThreads(library);
    lumiset_library_free(library);
    return s_faults;
}
