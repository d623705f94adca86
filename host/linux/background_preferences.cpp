// SPDX-License-Identifier: MIT
#include "host/linux/background_preferences.h"

#include <algorithm>
#include <system_error>

namespace quellar::host::linux {

using platform::Dictionary;
using platform::Value;

BackgroundPreferences::BackgroundPreferences(const DeviceRoot& root, FilePreferences::TroubleListener listener,
                                             Wake wake, BackgroundPreferencesOptions options)
    : listener_(std::move(listener)),
      wake_(std::move(wake)),
      options_(options),
      reader_(root, listener_, options.file),
      writer_(
          root,
          [this](const StoreTrouble& trouble) {
            // Of what is read the main thread knows by itself.
            const bool isOfReading = trouble.kind == StoreTrouble::Kind::Corrupt ||
                                     trouble.kind == StoreTrouble::Kind::Unreadable ||
                                     trouble.kind == StoreTrouble::Kind::Recovered;
            if (!isOfReading) writerTroubles_.push_back(trouble);
          },
          options.file) {}

BackgroundPreferences::~BackgroundPreferences() {
  finish();
}

std::optional<Value> BackgroundPreferences::copyAppValue(std::string_view key, std::string_view domain) {
  const Place place{domain, key};
  std::optional<Value> value = valueAt(place);
  known_.insert_or_assign(place, value);
  noteActivity();
  return value;
}

std::optional<Value> BackgroundPreferences::valueAt(const Place& place) {
  const auto pending = pending_.find(place);
  return pending == pending_.end() ? reader_.copyAppValue(place.second, place.first) : pending->second.value;
}

void BackgroundPreferences::noteActivity() const {
  if (activity_) activity_();
}

std::vector<BackgroundPreferences::Place> BackgroundPreferences::changedElsewhere() {
  std::vector<Place> changed;
  for (const auto& [place, value] : known_) {
    const std::optional<Value> stored = valueAt(place);
    // What can't be read now is not known to have changed.
    if (stored != value && reader_.wasRead(place.first)) changed.push_back(place);
  }
  return changed;
}

void BackgroundPreferences::acceptChanges() {
  for (auto& [place, value] : known_) value = valueAt(place);
}

void BackgroundPreferences::setAppValue(std::string_view key, const std::optional<Value>& value,
                                        std::string_view domain) {
  const Place place{domain, key};
  PreferenceChange change{.key = place.second, .value = value};
  if (const auto known = known_.find(place); known != known_.end()) {
    change.merges = true;
    change.base = known->second;
  }
  known_.insert_or_assign(place, value);
  pending_.insert_or_assign(place, Pending{value, ++lastSet_});
  enqueue(place.first, std::move(change));
  noteActivity();
}

void BackgroundPreferences::enqueue(std::string domain, PreferenceChange change) {
  {
    const std::lock_guard guard(mutex_);
    lastQueued_ = lastSet_;
    auto changes = std::ranges::find(queue_, domain, &Batch::value_type::first);
    if (changes == queue_.end()) changes = queue_.insert(changes, {std::move(domain), {}});
    const auto same = std::ranges::find(changes->second, change.key, &PreferenceChange::key);
    if (same == changes->second.end()) {
      changes->second.push_back(std::move(change));
    } else {
      // One write makes both changes; it is a change of what the first one changed.
      same->value = std::move(change.value);
    }
  }
  if (!thread_.joinable()) {
    try {
      thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
    } catch (const std::system_error&) {
      // The system has no thread left, so that this one has to wait.
      outcomes_.push_back(write(std::exchange(queue_, {}), lastQueued_));
      if (wake_) wake_();
      return;
    }
  }
  changed_.notify_one();
}

void BackgroundPreferences::whenWritten(std::function<void()> work) {
  if (works_.empty() && lastDelivered_ == lastSet_) return work();
  works_.push_back({lastSet_, std::move(work)});
}

void BackgroundPreferences::deliver() {
  std::vector<Outcome> outcomes;
  {
    const std::lock_guard guard(mutex_);
    outcomes = std::exchange(outcomes_, {});
  }
  for (const Outcome& outcome : outcomes) {
    lastDelivered_ = std::max(lastDelivered_, outcome.number);
    for (const auto& [domain, written] : outcome.written) reader_.adopt(domain, written);
    if (!outcome.hasUnsaved) {
      std::erase_if(pending_, [&](const auto& pending) { return pending.second.number <= outcome.number; });
    }
    for (const StoreTrouble& trouble : outcome.troubles) {
      if (listener_) listener_(trouble);
    }
  }
  while (!works_.empty() && works_.front().after <= lastDelivered_) {
    const Work work = std::move(works_.front());
    works_.pop_front();
    work.run();
  }
  noteActivity();
}

void BackgroundPreferences::retry() {
  {
    const std::lock_guard guard(mutex_);
    retriesNow_ = true;
  }
  changed_.notify_one();
}

void BackgroundPreferences::finish() {
  if (thread_.joinable()) {
    thread_.request_stop();
    thread_.join();
  } else {
    writer_.retryUnsaved();
  }
  deliver();
}

void BackgroundPreferences::run(const std::stop_token& stop) {
  std::chrono::milliseconds pause = options_.firstRetry;
  std::unique_lock guard(mutex_);
  while (true) {
    const auto isDue = [this] { return !queue_.empty() || std::exchange(retriesNow_, false); };
    if (writer_.hasUnsaved()) {
      changed_.wait_for(guard, stop, pause, isDue);
    } else {
      changed_.wait(guard, stop, isDue);
    }
    const bool isLast = stop.stop_requested() && queue_.empty();
    if (isLast && !writer_.hasUnsaved()) return;
    const Batch batch = std::exchange(queue_, {});
    const std::uint64_t number = lastQueued_;
    guard.unlock();
    Outcome outcome = write(batch, number);
    pause = outcome.hasUnsaved ? std::min(2 * pause, options_.lastRetry) : options_.firstRetry;
    guard.lock();
    outcomes_.push_back(std::move(outcome));
    if (wake_) wake_();
    if (isLast) return;
  }
}

/// Writes a batch and what could not be written before, on the thread that calls.
BackgroundPreferences::Outcome BackgroundPreferences::write(const Batch& batch, std::uint64_t number) {
  Outcome outcome;
  outcome.number = number;
  try {
    for (const auto& [domain, changes] : batch) {
      if (auto written = writer_.write(domain, changes)) outcome.written.emplace_back(domain, *std::move(written));
    }
    if (batch.empty()) writer_.retryUnsaved();
  } catch (const std::exception& error) {
    outcome.troubles.push_back({StoreTrouble::Kind::Write, {}, error.what()});
  }
  outcome.hasUnsaved = writer_.hasUnsaved();
  std::ranges::move(writerTroubles_, std::back_inserter(outcome.troubles));
  writerTroubles_.clear();
  return outcome;
}

void WrittenFirstDarwinCenter::postNotification(std::string_view name, bool deliverImmediately) {
  preferences_.whenWritten([&next = next_, name = std::string(name), deliverImmediately] {
    next.postNotification(name, deliverImmediately);
  });
}

void WrittenFirstDarwinCenter::notifyPost(std::string_view name) {
  preferences_.whenWritten([&next = next_, name = std::string(name)] { next.notifyPost(name); });
}

void WrittenFirstDistributedCenter::postNotification(std::string_view name, const std::optional<std::string>& object,
                                                     const std::optional<Dictionary>& userInfo,
                                                     bool deliverImmediately) {
  preferences_.whenWritten([&next = next_, name = std::string(name), object, userInfo, deliverImmediately] {
    next.postNotification(name, object, userInfo, deliverImmediately);
  });
}

}  // namespace quellar::host::linux
