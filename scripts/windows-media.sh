# Sourced by scripts/setup-windows: what lumiset.exe reads and writes files with. The FFmpeg libraries and those that
# they use are built from their Debian sources, for no package has them for the cross compiler. What came of them is kept
# in the user's cache, for every folder that the project is built in.

media_sources=(ffmpeg x264 libvpx opus lame libwebp zimg)
media_triplet=x86_64-w64-mingw32

# What people who make videos have and hand on. Everything else of FFmpeg is left out.
media_decoders=(
    h264 hevc vp8 vp9 mpeg1video mpeg2video mpeg4 'msmpeg4*' 'h263*' 'wmv*' vc1 flv vp6 vp6a vp6f theora
    prores dnxhd cfhd ffv1 ffvhuff huffyuv utvideo magicyuv qtrle rpza cinepak svq1 svq3 dvvideo hap rawvideo 'v210*'
    r210 r10k v308 v408 v410 yuv4 wrapped_avframe libvpx_vp8 libvpx_vp9
    png apng mjpeg mjpegb jpeg2000 jpegls tiff bmp webp targa gif exr dpx psd qoi sgi sunrast pam pbm pgm pgmyuv ppm
    'aac*' ac3 eac3 dca 'mp1*' 'mp2*' 'mp3*' opus vorbis flac alac truehd mlp wavpack wmav1 wmav2 wmapro 'pcm_*'
    'adpcm_ima_*' adpcm_ms adpcm_swf nellymoser
    ass srt ssa subrip webvtt movtext text
)
media_encoders=(
    libx264 libvpx_vp8 libvpx_vp9 prores_ks prores qtrle ffv1 ffvhuff huffyuv utvideo magicyuv dnxhd cfhd mpeg1video
    mpeg2video mpeg4 mjpeg dvvideo rawvideo v210 r210 wrapped_avframe gif apng
    png tiff bmp libwebp targa exr dpx jpeg2000 jpegls qoi sgi sunrast pam pbm pgm pgmyuv ppm
    aac ac3 eac3 libopus libmp3lame mp2 flac alac vorbis wavpack 'pcm_*' adpcm_ms adpcm_swf
    ass srt ssa subrip webvtt movtext text
)
media_containers=(  # as muxers, as demuxers or as both
    mov mp4 ipod '3g*' matroska webm avi mpegts mpegtsraw 'mpeg1*' 'mpeg2*' mpegps mpegvideo m4v flv asf mxf 'ogg*' dv
    gif apng image2 'image_*' rawvideo yuv4mpegpipe h264 hevc ivf obu vc1 wav w64 aiff mp3 aac adts flac ac3 eac3 caf
    'pcm_*' swf nut tty srt ass webvtt
)

configure_media() {
    CC="ccache $media_triplet-gcc-posix" CXX="ccache $media_triplet-g++-posix" ./configure "--prefix=$media" "$@"
}
build_with_make() {
    make -j "${LUMISET_JOBS:-2}"
    make install
}
build_x264() {
    configure_media "--host=$media_triplet" "--cross-prefix=$media_triplet-" --enable-static --disable-cli --disable-opencl
    build_with_make
}
build_libvpx() {
    CROSS=$media_triplet- configure_media --target=x86_64-win64-gcc --disable-examples --disable-tools --disable-docs \
        --disable-unit-tests --enable-vp9-highbitdepth
    build_with_make
}
build_opus() {
    configure_media "--host=$media_triplet" --disable-shared --disable-doc --disable-extra-programs \
        --disable-stack-protector
    build_with_make
}
build_lame() {
    configure_media "--host=$media_triplet" --disable-shared --disable-frontend --disable-decoder
    build_with_make
}
cmake_here() {
    local source=$PWD
    cd "$root"
    build_with_cmake "$source" -DCMAKE_C_COMPILER_LAUNCHER=ccache "$@"
}
build_libwebp() {
    cmake_here -DWEBP_BUILD_{ANIM_UTILS,CWEBP,DWEBP,GIF2WEBP,IMG2WEBP,VWEBP,WEBPINFO,WEBPMUX,EXTRAS}=OFF
}
build_zimg() {
    cat >CMakeLists.txt <<'FILE'
cmake_minimum_required(VERSION 3.25)
project(zimg LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 14)
file(GLOB_RECURSE sources src/zimg/*.cpp)
list(FILTER sources EXCLUDE REGEX /arm/)
add_library(zimg STATIC ${sources})
target_include_directories(zimg PRIVATE src/zimg)
target_compile_definitions(zimg PRIVATE ZIMG_X86=1 ZIMG_X86_AVX512=1)
foreach(set "sse;-msse" "sse2;-msse2" "avx;-mavx;-mtune=sandybridge" "f16c_ivb;-mavx;-mf16c;-mtune=ivybridge"
    "avx2;-mavx2;-mf16c;-mfma;-mtune=haswell"
    "avx512;-mavx512f;-mavx512cd;-mavx512vl;-mavx512bw;-mavx512dq;-mtune=skylake-avx512"
    "avx512_vnni;-mavx512f;-mavx512cd;-mavx512vl;-mavx512bw;-mavx512dq;-mavx512vnni;-mtune=cascadelake")
  list(POP_FRONT set name)
  set(files ${sources})
  list(FILTER files INCLUDE REGEX [_/]${name}.cpp$)
  set_source_files_properties(${files} PROPERTIES COMPILE_OPTIONS "${set}")
endforeach()
install(TARGETS zimg)
install(FILES src/zimg/api/zimg.h src/zimg/api/zimg++.hpp TYPE INCLUDE)
file(WRITE ${CMAKE_BINARY_DIR}/zimg.pc "prefix=${CMAKE_INSTALL_PREFIX}\nName: zimg\nDescription: zimg\nVersion: 3\n"
  "Libs: -L\${prefix}/lib -lzimg -lstdc++\nCflags: -I\${prefix}/include\n")
install(FILES ${CMAKE_BINARY_DIR}/zimg.pc DESTINATION lib/pkgconfig)
FILE
    cmake_here
}
build_glob() {
    mkdir -p "$media/include" "$media/lib"
    cp "$root/platform/win32/glob/glob.h" "$media/include"
    ccache "$media_triplet-gcc-posix" -O2 -c "$root/platform/win32/glob/glob.c" -o "$work/glob.o"
    "$media_triplet-ar" rcs "$media/lib/libglob.a" "$work/glob.o"
}
build_ffmpeg() {
    local options=() kind
    for kind in decoders encoders; do
        declare -n names=media_$kind
        options+=("${names[@]/#/--enable-${kind%s}=}")
    done
    for kind in muxer demuxer; do
        options+=("${media_containers[@]/#/--enable-$kind=}")
    done
    PKG_CONFIG_LIBDIR=$media/lib/pkgconfig ./configure "--prefix=$media" --arch=x86_64 --target-os=mingw32 \
        --enable-cross-compile "--cross-prefix=$media_triplet-" "--cc=ccache $media_triplet-gcc-posix" \
        --pkg-config=pkg-config --pkg-config-flags=--static "--extra-cflags=-I$media/include" \
        "--extra-ldflags=-L$media/lib" "--extra-libs=-lglob -lssp" --optflags=-O2 \
        --disable-autodetect --disable-programs --disable-doc --disable-debug --disable-avdevice --disable-avfilter --disable-postproc \
        --disable-network --disable-pthreads --enable-w32threads --enable-gpl --enable-zlib --enable-libx264 \
        --enable-libvpx --enable-libopus --enable-libmp3lame --enable-libwebp \
        --disable-everything --enable-protocol=file,pipe --enable-parsers --enable-bsfs "${options[@]}"
    grep -q '^#define HAVE_GLOB 1' config.h
    build_with_make
}

# Builds all of it into $media, with what their licences ask for: their terms, and which sources they are.
build_media() {
    local source folder prefix=$media
    read_private_lists
    mkdir -p "$build/sources" "$media/share/licenses"
    (cd "$build/sources" && apt-get "${private_apt[@]}" source "${media_sources[@]}")
    build_glob
    for source in x264 libvpx opus lame libwebp zimg ffmpeg; do
        folder=$(echo "$build/sources/$source"-*/)
        (cd "$folder" && "build_$source")
        cp "$folder/debian/copyright" "$media/share/licenses/$source.txt"
        (cd "$folder" && dpkg-parsechangelog | sed -n 's/^Source: //p; s/^Version: //p' | paste -sd =) \
            >>"$media/share/licenses/sources"
    done
    sed -i '/^Libs:/s/$/ -lglob/' "$media/lib/pkgconfig/libavformat.pc"
    # Found by its name, the library of threads would be the DLL's; the compiler links the right one unasked.
    sed -i "s|^prefix=.*|prefix=\${pcfiledir}/../..|; s|$media|\${prefix}|g; s| -lpthread||g" "$media"/lib/pkgconfig/*.pc
}

# Puts it below $prefix, from the user's cache where it is there. It is built beside it: FFmpeg's files know the folder, and
# the compiler's cache knows them again in the same one.
add_media() {
    local root=$PWD key build media
    key=$(cat scripts/windows-media.sh platform/win32/glob/* cmake/mingw.cmake cmake/win64.cmake |
        cat - <(dpkg-query -W g++-mingw-w64-x86-64-posix libz-mingw-w64-dev) | sha256sum | cut -c1-16)
    build=${XDG_CACHE_HOME:-$HOME/.cache}/lumiset/windows-media media=$build/out
    local cache=$build-$key.tar.gz
    mkdir -p "${build%/*}"
    exec 9>"$build.lock"
    flock 9
    if [ ! -e "$cache" ]; then
        say "Building the FFmpeg libraries for win64"
        rm -rf "$build"
        build_media >"$work/log" 2>&1
        tar -C "$media" -czf "$cache.part" .
        mv "$cache.part" "$cache"
        rm -rf "$build"
    fi
    exec 9>&-
    tar -C "$prefix" -xzf "$cache"
}
