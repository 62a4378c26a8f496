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

std::string inWords(const Event& event) {
    const std::string result = event.result.empty() ? "" : " = " + event.result;
    switch (event.kind) {
    case Event::Kind::call:
        break;
    case Event::Kind::enter:
        return "-> " + event.name + '(' + event.arguments + ')';
    case Event::Kind::leave:
        return "<- " + event.name + result;
    case Event::Kind::violation:
        return "! contract violation: " + event.text;
    }
    return event.name + '(' + event.arguments + ')' + result;
}

std::vector<std::string> Journal::lines() const {
    std::vector<std::string> lines;
    for (const Event& event : record_.events)
        lines.push_back(inWords(event));
    return lines;
}

void Journal::add(Event event) {
    if (isOn())
        store(mutex_, record_, &Record::events, std::move(event));
}

void Journal::dialog(Dialog dialog) {
    store(mutex_, record_, &Record::dialogs, std::move(dialog));
}

void Journal::violation(std::string text) {
    add({.kind = Event::Kind::violation, .text = text});
    store(mutex_, record_, &Record::violations, std::move(text));
}

void Journal::append(Record&& record) {
    const std::lock_guard lock{mutex_};
    moveItems(record.events, record_.events);
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
