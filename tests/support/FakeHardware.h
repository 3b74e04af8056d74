#pragma once

#include "peers/devices/Hardware.h"
#include "peers/devices/Seats.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

namespace support {

/// Hardware without any: its files are the writing ends of pipes, and it writes down what is done.
class FakeHardware final : public kelvo::Hardware {
public:
    /// "open NODE", "make PLACE", "unmake PLACE", "revoke NODE", "store NAME", "drop NAME", each with a blank behind.
    std::string diary;
    /// The kernel has no maker of virtual devices.
    bool cannotMake = false;

    [[nodiscard]] kelvo::Descriptor openDisplay(const std::string& node) override {
        note("open", node);
        return newFile(node);
    }
    [[nodiscard]] touch::PanelDescription describe(const kelvo::Descriptor& /*display*/) override {
        return {.name = "Panel", .x = {0, 2000, 10}, .y = {0, 1000, 10}, .slots = 10};
    }
    [[nodiscard]] std::unique_ptr<Devices> makeDevices(const touch::PanelDescription& /*panel*/,
                                                       const std::string& place) override {
        if (cannotMake) throw std::runtime_error("the kernel has no uinput");
        note("make", place);
        return std::make_unique<Made>(*this, place);
    }
    void revoke(const kelvo::Descriptor& file) override { note("revoke", names_.at(inodeOf(file.number()))); }
    void store(const kelvo::Descriptor& /*file*/, const std::string& name) override { note("store", name); }
    void drop(const std::string& name) override { note("drop", name); }

    /// Which of its files an open one is, wherever it was handed to; empty where it is none of them.
    [[nodiscard]] std::string nameOf(int file) const {
        const auto found = names_.find(inodeOf(file));
        return found == names_.end() ? "" : found->second;
    }

private:
    class Made final : public Devices {
    public:
        Made(FakeHardware& hardware, std::string place) : hardware_(hardware), place_(std::move(place)) {}
        Made(const Made&) = delete;
        Made& operator=(const Made&) = delete;
        ~Made() override { hardware_.note("unmake", place_); }

        kelvo::VirtualNodes openNodes() override {
            kelvo::VirtualNodes nodes;
            for (std::size_t i = 0; i < nodes.size(); ++i) nodes.at(i) = hardware_.newFile(std::to_string(i));
            return nodes;
        }

    private:
        FakeHardware& hardware_;
        std::string place_;
    };

    void note(const std::string& what, const std::string& name) { diary += what + " " + name + " "; }

    [[nodiscard]] static ino_t inodeOf(int file) {
        struct stat facts {};
        if (fstat(file, &facts) != 0) throw std::runtime_error("this file is not open");
        return facts.st_ino;
    }

    kelvo::Descriptor newFile(const std::string& name) {
        std::array<int, 2> ends{};
        if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        // Kept open, so that the number of the pipe stays its own.
        readers_.emplace_back(ends[0]);
        names_[inodeOf(ends[1])] = name;
        return kelvo::Descriptor(ends[1]);
    }

    std::vector<kelvo::Descriptor> readers_;
    std::map<ino_t, std::string> names_;
};

/// Seats on which whoever a test names is active.
class FakeSeats final : public kelvo::Seats {
public:
    std::map<std::string, uid_t> active;

    [[nodiscard]] std::optional<uid_t> activeUser(const std::string& seat) const override {
        const auto found = active.find(seat);
        if (found == active.end()) return std::nullopt;
        return found->second;
    }
};

} // namespace support
