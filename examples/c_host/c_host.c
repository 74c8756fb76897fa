/* A host in C: renders a picture through one effect.
 *
 *   c_host EFFECT PRESET SECONDS IN.ppm OUT.ppm
 *
 * cc c_host.c $(pkg-config --cflags --libs lumiset-c) -o c_host
 */

#include <lumiset.h>
#include <stdio.h>
#include <stdlib.h>

// ---- The effect
static int render(const char* effect, const char* preset, double seconds, lumiset_picture* picture) {
    lumiset_library* library = lumiset_library_open(NULL);
    lumiset_look* look = lumiset_look_new(library);
    lumiset_renderer* renderer = NULL;
    int done = lumiset_look_add(look, effect, preset) == LUMISET_OK &&
               (renderer = lumiset_renderer_new(look, 0.0)) != NULL &&
               lumiset_render(renderer, picture, picture, seconds) == LUMISET_OK; /* in place */
    if (!done) {
        fprintf(stderr, "%s\n", lumiset_error());
    }
    lumiset_renderer_free(renderer);
    lumiset_look_free(look);
    lumiset_library_free(library);
    return done;
}
// ---- The rest
static int fail(const char* sentence) {
    fprintf(stderr, "%s\n", sentence);
    return 1;
}

int main(int count, char** words) {
    lumiset_picture picture = {sizeof picture, NULL, 0, 0, 0, LUMISET_UINT8, "RGB"};
    FILE* file;
    size_t bytes;
    if (count != 6) {
        return fail("c_host EFFECT PRESET SECONDS IN.ppm OUT.ppm");
    }
    file = fopen(words[4], "rb");
    if (file == NULL || fscanf(file, "P6 %d %d 255%*c", &picture.width, &picture.height) != 2 || picture.width < 1 ||
        picture.height < 1 || picture.width > 20000 || picture.height > 20000) {
        return fail("The input is no PPM file of 8 bits.");
    }
    bytes = (size_t)3 * (size_t)picture.width * (size_t)picture.height;
    picture.data = malloc(bytes);
    if (picture.data == NULL || fread(picture.data, 1, bytes, file) != bytes) {
        return fail("The input ends too early.");
    }
    fclose(file);
    if (!render(words[1], words[2], atof(words[3]), &picture)) {
        return 1;
    }
    file = fopen(words[5], "wb");
    if (file == NULL || fprintf(file, "P6\n%d %d\n255\n", picture.width, picture.height) < 0 ||
        fwrite(picture.data, 1, bytes, file) != bytes || fclose(file) != 0) {
        return fail("The output cannot be written.");
    }
    free(picture.data);
    return 0;
}
