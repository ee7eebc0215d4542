#include "platform/ReadQueues.h"

#include <algorithm>
#include <utility>

namespace vantro {

namespace {

constexpr std::chrono::milliseconds kProgressPause(33);

bool IsProgress(const ReadNote& note)
{
    return !note.isComplete && note.property.StatusCode == ReadStatusCode::DataArriving;
}

} // namespace

void OrderQueue::Give(ReadOrder order)
{
    const std::lock_guard lock(mutex_);
    if (!multi_)
        return;
    orders_.push_back(std::move(order));
    given_.notify_one();
    curl_multi_wakeup(multi_);
}

void OrderQueue::Close()
{
    const std::lock_guard lock(mutex_);
    if (multi_)
        curl_multi_wakeup(std::exchange(multi_, nullptr));
}

std::deque<ReadOrder> OrderQueue::TakeAll()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(orders_, {});
}

void OrderQueue::Wait(const std::stop_token& stop)
{
    std::unique_lock lock(mutex_);
    given_.wait(lock, stop, [this] { return !orders_.empty(); });
}

bool NoteQueue::Merge(ReadNote& note)
{
    const auto latest = std::find_if(notes_.rbegin(), notes_.rend(),
        [&](const ReadNote& waiting) { return waiting.ticket == note.ticket; });
    if (latest == notes_.rend() || !IsProgress(*latest))
        return false;
    *latest = std::move(note);
    return true;
}

void NoteQueue::Post(ReadNote note, bool isFirst)
{
    {
        const std::lock_guard lock(mutex_);
        const bool isProgress = IsProgress(note);
        if (isProgress && Merge(note))
            return; // whoever takes the earlier one takes this
        notes_.push_back(std::move(note));
        if (wakeAsked_)
            return;
        const auto now = Clock::now();
        isHeldBack_ = isProgress && !isFirst && now < nextProgress_;
        if (isHeldBack_)
            return;
        if (isProgress)
            nextProgress_ = now + kProgressPause;
        wakeAsked_ = true;
    }
    wake_();
}

std::optional<NoteQueue::Clock::time_point> NoteQueue::Due()
{
    const std::lock_guard lock(mutex_);
    return isHeldBack_ ? std::optional(nextProgress_) : std::nullopt;
}

void NoteQueue::WakeIfDue()
{
    {
        const std::lock_guard lock(mutex_);
        const auto now = Clock::now();
        if (!isHeldBack_ || now < nextProgress_)
            return;
        isHeldBack_ = false;
        nextProgress_ = now + kProgressPause;
        wakeAsked_ = true;
    }
    wake_();
}

std::size_t NoteQueue::CountWaiting()
{
    const std::lock_guard lock(mutex_);
    wakeAsked_ = false;
    isHeldBack_ = false;
    return notes_.size();
}

std::optional<ReadNote> NoteQueue::Take()
{
    const std::lock_guard lock(mutex_);
    if (notes_.empty())
        return std::nullopt;
    std::optional<ReadNote> note(std::move(notes_.front()));
    notes_.pop_front();
    return note;
}

void NoteQueue::WakeForRest()
{
    {
        const std::lock_guard lock(mutex_);
        if (notes_.empty() || std::exchange(wakeAsked_, true))
            return;
        isHeldBack_ = false;
    }
    wake_();
}

} // namespace vantro
