#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// A recording to play, and what is to be otherwise than the settings of the display say.
struct RecordingChoice {
    std::string path;
    /// Whose settings count, in place of those of the display that was recorded.
    std::optional<std::string> display;
    bool isPointer = false;
    /// As on a desktop that cannot take touches back.
    bool keepsTouches = false;
};

/// The choice in the words of a command line. What cannot be understood is a std::runtime_error that names the fix.
[[nodiscard]] RecordingChoice recordingChoiceIn(const std::vector<std::string>& words);

/// Plays a recording of fingers through all of the driver's judgement and prints what would be given out, each step as
/// one line of JSON. No file is written. What is wrong with the recording is a std::runtime_error that names the line.
void playRecording(const RecordingChoice& choice, const std::function<void(const std::string&)>& printLine);

} // namespace kelvo
