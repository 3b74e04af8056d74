#pragma once

#include <ostream>
#include <string>

namespace kelvo::touchctl {

/// The lines of doctor's report, as they are found out.
class Report {
public:
    explicit Report(std::ostream& out) : out_(out) {}

    void section(const char* title) { out_ << title << '\n'; }
    void fine(const std::string& text) { out_ << "  ok       " << text << '\n'; }
    void note(const std::string& text) { out_ << "  note     " << text << '\n'; }
    void problem(const std::string& text, const std::string& fix) {
        out_ << "  PROBLEM  " << text << "\n           fix: " << fix << '\n';
        ++problems_;
    }
    [[nodiscard]] int problems() const { return problems_; }

private:
    std::ostream& out_;
    int problems_ = 0;
};

} // namespace kelvo::touchctl
