#pragma once

#include "peers/driver/OutputPrinter.h"
#include "touch/KernelEvent.h"
#include "touch/Output.h"
#include "touch/Panel.h"
#include "touch/Recording.h"

#include <fstream>
#include <string>

namespace kelvo {

/// What fingers did on a panel, and what came of it, in one text file: evemu's form, which other tools and our own
/// player read, with everything else as its comments.
class RecordingFile {
public:
    /// Makes the file, which must not be there yet; else a std::runtime_error. `settings` is a line that says what the
    /// display was to do.
    RecordingFile(const std::string& path, const touch::PanelDescription& panel, const std::string& settings);

    void write(const touch::KernelEvent& event) { file_ << touch::textOf(event); }
    void write(const touch::Output& output, touch::Time now) { printer_.give(output, now); }
    /// Writes what is still to be written. False where not all of it could be.
    [[nodiscard]] bool finish() { return static_cast<bool>(file_.flush()); }

private:
    std::ofstream file_;
    OutputPrinter printer_;
};

} // namespace kelvo
