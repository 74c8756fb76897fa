#pragma once

#include <string>

namespace lumiset::media {

/// Two seconds of black with a white flash and a beep at second 1, a tenth of a second each; lossless video and sound,
/// sound at 48000 samples a second.
void writeFlashAndBeep(const std::string& path);
/// Time of the first sound, and the length of all of it, in seconds.
double firstLoudSecond(const std::string& path);
double soundLength(const std::string& path);
/// Copies the video into another file, with a display matrix that turns it clockwise by 90 degrees.
void remuxTurned(const std::string& from, const std::string& to);

}  // namespace lumiset::media
