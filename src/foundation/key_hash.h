// A hash for keys that come out of files. It depends on a secret that each process draws for itself, so that no file
// can hold keys that were chosen to meet in one place of a table.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace pelt {

struct HashSecret {
    uint64_t first;
    uint64_t second;
};

// SipHash-1-3 of the bytes under a secret.
uint64_t hash_bytes(const HashSecret& secret, const void* bytes, size_t size);

// A new secret out of the system's source of chance. Where that has nothing to give, the time and the place of the
// program in memory have to do.
HashSecret hash_secret_draw();

// The hash of a key under the secret of this process; the same key gives the same value until it ends. The two have
// nothing to do with each other.
uint64_t key_hash(const void* bytes, size_t size);
uint64_t key_hash(int32_t key);

// For the tables of the standard library.
struct KeyHash {
    size_t operator()(int32_t key) const { return static_cast<size_t>(key_hash(key)); }
    size_t operator()(std::string_view key) const { return static_cast<size_t>(key_hash(key.data(), key.size())); }
};

}  // namespace pelt
