#pragma once

#include <string>
#include <vector>

namespace lumiset::media {

/// Two seconds of black with a white flash and a beep at second 1, a tenth of a second each; lossless video and two
/// equal tracks of sound at 48000 samples a second.
void writeFlashAndBeep(const std::string& path);
/// Time of the first sound, and the length of all of it, in seconds.
double firstLoudSecond(const std::string& path);
double soundLength(const std::string& path);
/// Copies the video into another file, with a display matrix that turns it clockwise by 90 degrees.
void remuxTurned(const std::string& from, const std::string& to);

/// Two seconds at 25 pictures a second with a subtitle at second 1, an attachment, a cover, a time code from
/// 01:00:00:00 on and two chapters, the second from second 1 on.
void writeFullClip(const std::string& path);

/// What a file has beside its video.
struct Contents {
    std::vector<double> chapters;  ///< where they begin, in seconds
    std::string timecode;
    int attachments = 0;
    int sounds = 0;
    std::string cover;     ///< a picture file
    std::string subtitle;  ///< the first one's bytes
    double subtitleSeconds = -1;
};
Contents contentsOf(const std::string& path);

}  // namespace lumiset::media
