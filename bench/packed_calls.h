// The calls of a frame in a file, so that a program on a real OpenGL can make what one on the recording OpenGL wrote
// down. A call that hands over a picture holds its address; the texels therefore lie at one address in both programs.
#pragma once

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>

#include "support/recording_gl.h"

namespace bench {

inline unsigned char* texels_at_fixed_address(size_t size) {
    void* const wanted = reinterpret_cast<void*>(0x600000000000);
    void* block = mmap(wanted, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_FIXED_NOREPLACE, -1, 0);
    if (block != wanted) {
        std::fprintf(stderr, "no room for the texels at their address\n");
        std::exit(2);
    }
    auto* texels = static_cast<unsigned char*>(block);
    for (size_t i = 0; i < size; ++i) { texels[i] = static_cast<unsigned char>(i % 251); }
    return texels;
}

inline bool write_calls(const char* path, const recording_gl::Packed& calls) {
    FILE* file = std::fopen(path, "wb");
    if (file == nullptr) { return false; }
    const size_t written = std::fwrite(calls.data(), sizeof calls[0], calls.size(), file);
    return std::fclose(file) == 0 && written == calls.size();
}

inline recording_gl::Packed read_calls(const char* path) {
    recording_gl::Packed calls;
    FILE* file = std::fopen(path, "rb");
    if (file == nullptr) { return calls; }
    uint32_t words[4096];
    for (size_t count; (count = std::fread(words, sizeof words[0], 4096, file)) > 0;) {
        calls.insert(calls.end(), words, words + count);
    }
    std::fclose(file);
    return calls;
}

}  // namespace bench
