#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace krohost {

/// How much the journal writes down.
enum class JournalDetail {
    off,   ///< no events; dialogs and violations are kept all the same
    calls, ///< every call, but of the calls that build and read string and argument lists only those that fail
    all    ///< every call
};

/// A call across the line, or a breach of its contract.
struct Event {
    enum class Kind {
        call,     ///< of the host by the add-on
        enter,    ///< of a callback of the add-on by the host
        leave,    ///< the end of the same
        violation ///< of which there is the text alone
    };
    Kind kind{};
    std::string name = {};
    std::string arguments = {};
    std::string result = {}; ///< empty: none
    std::string text = {};
};

/// `name(arguments) = result`, `-> name(arguments)`, `<- name = result` or `! contract violation: text`.
std::string inWords(const Event& event);

/// An error that the add-on or the host showed. During a load on demand, `zone` and `variable` say for what (from 1;
/// variable 0: the node map); else both are 0.
struct Dialog {
    std::string text;
    std::int32_t zone = 0;
    std::int32_t variable = 0;
};

/// What happened, in order.
struct Record {
    std::vector<Event> events;
    std::vector<Dialog> dialogs;
    std::vector<std::string> violations;
};

/// Keeps what crosses the line between add-on and host. Events hold no addresses, threads or times, so that two equal
/// runs write equal journals. Writing: [any thread]. Reading: while no add-on code runs.
class Journal {
public:
    explicit Journal(JournalDetail detail) : detail_{detail} {}

    JournalDetail detail() const { return detail_; }
    bool isOn() const { return detail_ != JournalDetail::off; }

    const std::vector<Event>& events() const { return record_.events; }
    /// The events in words.
    std::vector<std::string> lines() const;
    const std::vector<Dialog>& dialogs() const { return record_.dialogs; }
    const std::vector<std::string>& violations() const { return record_.violations; }
    void clearEvents() { record_.events.clear(); }

    /// For where memory runs out in an end that must not fail: what should be here is not all here.
    void noteLoss() noexcept { hasLoss_ = true; }
    bool hasLoss() const noexcept { return hasLoss_; }

    /// Does nothing when the journal is off.
    void add(Event event);
    void dialog(Dialog dialog);
    void violation(std::string text);

    /// Appends a record that a redirection kept apart.
    void append(Record&& record);

    /// Collects what the current thread writes in a record of its own, so that the work of several threads can be put
    /// into an order that does not depend on them.
    class Redirection {
    public:
        explicit Redirection(Record& record);
        ~Redirection();
        Redirection(const Redirection&) = delete;
        Redirection& operator=(const Redirection&) = delete;
    };

private:
    JournalDetail detail_;
    std::atomic<bool> hasLoss_{false};
    std::mutex mutex_;
    Record record_;
};

} // namespace krohost
