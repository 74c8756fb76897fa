#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

struct AVMurMur3;

namespace lumiset::media {

struct RawPicture;

/// Tells bytes apart (MurmurHash3, 128 bits): for what was damaged or mistaken, not for what was forged.
class Hash {
public:
    Hash();
    void add(const void* bytes, std::size_t count);
    void add(const std::string& text) { add(text.data(), text.size()); }
    /// The last call.
    [[nodiscard]] std::string text();

private:
    struct Free {
        void operator()(AVMurMur3* hash) const;
    };
    std::unique_ptr<AVMurMur3, Free> m_hash;
};

/// Of a picture's samples as its source has them.
[[nodiscard]] std::string hashOf(const RawPicture& raw);

/// Of what a name of an input stands for, without reading all of it: the sizes of files, and blocks spread over them.
/// With `when` the times at which they were last changed as well, which a copy may not have. Throws MediaError.
[[nodiscard]] std::string identityOf(const std::string& input, bool when);

}  // namespace lumiset::media
