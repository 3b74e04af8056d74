#pragma once

#include "peers/actions/ActionsInForce.h"
#include "touch/Settings.h"

#include <string>

namespace kelvo {

/// The displays behind a driver, as its core needs them. Nothing here waits.
class Displays {
public:
    Displays() = default;
    Displays(const Displays&) = delete;
    Displays& operator=(const Displays&) = delete;
    virtual ~Displays() = default;

    /// What the display is to do from its next finger on. Called first when it connects.
    virtual void setSettings(const std::string& name, const touch::Settings& settings) = 0;
    /// What gestures do from the next finger on, on every display.
    virtual void setActions(const ActionsInForce& actions) = 0;
    /// The driver has let go of the display.
    virtual void forget(const std::string& name) = 0;
    /// A driver that is switched off gives nothing out and holds no display.
    virtual void setDriverEnabled(bool isEnabled) = 0;
    /// A display that is watched gives its raw contacts to its watcher and nothing else out.
    virtual void setWatched(const std::string& name, bool isWatched) = 0;
    /// Whether the display is this session's at the moment.
    [[nodiscard]] virtual bool isActive(const std::string& name) const = 0;

    /// Writes all that the fingers do into a file, until endRecording(). What cannot be done is a std::runtime_error
    /// that says why.
    virtual void beginRecording(const std::string& name, const std::string& path) = 0;
    virtual void endRecording(const std::string& name) = 0;
};

} // namespace kelvo
