#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace kelvo::touchctl {

/// A property-list file of the product's, as it can be read or not. The pane makes no difference between the ways in
/// which it cannot; who is to mend it has to know.
struct StoredFile {
    enum class State { Missing, Readable, Unreadable, TooLarge, Damaged };

    State state = State::Missing;
    /// What a readable file holds, else nil.
    platform::NSMutableDictionary contents;
    /// What the system says of an unreadable one.
    std::string reason;

    /// What is wrong, to stand behind the file's name; empty when nothing is.
    [[nodiscard]] std::string complaint() const;
};

/// The file at `path`, read as the pane reads it.
[[nodiscard]] StoredFile storedFileAt(const std::string& path);

/// What the system says when a folder is to be listed and its files looked at; none when it lets one, and none when
/// nothing is there.
[[nodiscard]] std::optional<std::string> reasonAgainstListing(const std::string& folder);

/// What the system says when a file of this folder is to be replaced; none when it lets one, and none when nothing is
/// there.
[[nodiscard]] std::optional<std::string> reasonAgainstWriting(const std::string& folder);

/// The bytes of a file, pipe or device to their end; "-" is standard input. What cannot be read, and what has more than
/// `most` bytes, is a Failure that says which.
[[nodiscard]] platform::NSData contentsOfInput(const std::string& path, std::size_t most);
/// Writes to standard output for "-", into a pipe, device or open file, or else a file as a whole or not at all. What
/// cannot be written is a Failure.
void writeToOutput(const std::string& path, std::span<const std::uint8_t> bytes);

} // namespace kelvo::touchctl
