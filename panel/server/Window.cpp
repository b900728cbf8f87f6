// SPDX-License-Identifier: LicenseRef-HXAux
#include "panel/server/Window.h"

#include "tools/cli/Json.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace hxpanel {

namespace {

using Json = nlohmann::json;

} // namespace

void Window::add(const Json& event, std::string_view line, SteadyTime now)
{
    const std::string kind = event.value("event", "");
    time_ = event.value("time", time_);
    if (kind == "property")
        return addProperty(event);
    hasFaults_ = hasFaults_ || kind == "fault";
    const bool isRare = kind == "joined" || kind == "left";
    if (!isRare && !mayPass(line.size(), now)) {
        ++skipped_;
        return;
    }
    size_ += line.size();
    items_.emplace_back(line);
}

/// The change stands where the last one was: behind the request that caused it.
void Window::addProperty(const Json& event)
{
    const std::string name = event.value("name", "");
    Json change = event;
    if (const auto found = changed_.find(name); found != changed_.end()) {
        change["old"] = found->second.old;
        size_ -= items_[found->second.item]->size();
        items_[found->second.item].reset();
    }
    std::string line = cli::written(change);
    size_ += line.size();
    changed_[name] = {items_.size(), change.value("old", "")};
    values_[name] = event.value("new", "");
    items_.emplace_back(std::move(line));
}

bool Window::mayPass(std::size_t bytes, SteadyTime now)
{
    const std::chrono::duration<double> since = now - std::exchange(credited_, now);
    requests_ = std::min(requests_ + since.count() * kMostRequests, kMostRequests);
    bytes_ = std::min(bytes_ + since.count() * kMostBytes, kMostBytes);
    const auto size = static_cast<double>(bytes);
    if (requests_ < 1 || bytes_ < size)
        return false;
    requests_ -= 1;
    bytes_ -= size;
    return true;
}

std::string Window::take()
{
    std::string text = R"({"time":)" + Json(time_).dump() + R"(,"events":[)";
    const char* separator = "";
    for (const std::optional<std::string>& item : items_) {
        if (!item)
            continue;
        text += std::exchange(separator, ",") + *item;
    }
    if (skipped_ != 0)
        text += std::string{separator} + R"({"event":"skipped","count":)" + std::to_string(skipped_) + '}';
    items_.clear();
    size_ = 0;
    changed_.clear();
    values_.clear();
    hasFaults_ = false;
    skipped_ = 0;
    return text + "]}";
}

} // namespace hxpanel
