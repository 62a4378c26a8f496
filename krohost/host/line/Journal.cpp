#include "krohost/host/line/Journal.h"

#include <iterator>
#include <utility>

namespace krohost {

namespace {

thread_local Record* redirected = nullptr;

template <class Item>
void moveItems(std::vector<Item>& from, std::vector<Item>& to) {
    to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
}

template <class Item>
void store(std::mutex& mutex, Record& record, std::vector<Item> Record::*list, Item&& item) {
    if (redirected) {
        (redirected->*list).push_back(std::move(item));
        return;
    }
    const std::lock_guard lock{mutex};
    (record.*list).push_back(std::move(item));
}

} // namespace

void Journal::line(std::string text) {
    if (isOn())
        store(mutex_, record_, &Record::lines, std::move(text));
}

void Journal::dialog(Dialog dialog) {
    store(mutex_, record_, &Record::dialogs, std::move(dialog));
}

void Journal::violation(std::string text) {
    line("! contract violation: " + text);
    store(mutex_, record_, &Record::violations, std::move(text));
}

void Journal::append(Record&& record) {
    const std::lock_guard lock{mutex_};
    moveItems(record.lines, record_.lines);
    moveItems(record.dialogs, record_.dialogs);
    moveItems(record.violations, record_.violations);
}

Journal::Redirection::Redirection(Record& record) {
    redirected = &record;
}

Journal::Redirection::~Redirection() {
    redirected = nullptr;
}

} // namespace krohost
