// A host's hooks for tests: records every log line with its level, and answers the
// interrupt hook on demand (after a number of calls, slowly, or after dropping handles
// the host holds, to prove that a run keeps its own references).
#pragma once

#include <chrono>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <orv/fem/base_class.h>

namespace orv {
namespace test {

struct log_capture {
    std::vector<std::pair<unsigned, std::string>> lines;  // level, text
    int interrupts = 0;                                   // calls of the interrupt hook that answered
    int interrupt_after = -1;                             // answer true from this call on (-1: never)
    int sleep_ms = 0;                                     // time spent in each interrupt call
    orv::fem::base_class* drop = nullptr;                 // handles cleared in the first interrupt call
    orv::fem::base_class* drop2 = nullptr;

    static void display(void* self, unsigned level, const char* text) {
        static_cast<log_capture*>(self)->lines.emplace_back(level, text);
    }
    static bool interrupt(void* self) {
        auto* c = static_cast<log_capture*>(self);
        if (c->drop) c->drop->clear_w();
        if (c->drop2) c->drop2->clear_w();
        c->drop = c->drop2 = nullptr;
        if (c->sleep_ms) std::this_thread::sleep_for(std::chrono::milliseconds(c->sleep_ms));
        return c->interrupt_after >= 0 && c->interrupts++ >= c->interrupt_after;
    }

    // Points a solver's settings (or any record with the three hook fields) at this.
    template <class Settings>
    void attach(Settings& s, bool with_display = true) {
        s.display_hook = with_display ? &display : nullptr;
        s.interrupt_hook = &interrupt;
        s.pass_thru = this;
    }

    std::string all() const {
        std::string s;
        for (const auto& l : lines) s += l.second;
        return s;
    }
    // Whether a line starts with prefix.
    bool starts(const std::string& prefix) const {
        for (const auto& l : lines)
            if (l.second.compare(0, prefix.size(), prefix) == 0) return true;
        return false;
    }
    // Whether a line holds part anywhere.
    bool has(const std::string& part) const {
        for (const auto& l : lines)
            if (l.second.find(part) != std::string::npos) return true;
        return false;
    }
};

}  // namespace test
}  // namespace orv
