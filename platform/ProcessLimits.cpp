#include "platform/ProcessLimits.h"

#include "base/Words.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <pthread.h>
#include <semaphore>
#include <sys/eventfd.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace vantro {

namespace {

constexpr rlim_t kUsualFileLimit = 1024; // programs that use select() fail beyond it

rlimit FileLimit()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    return limit;
}

bool CanOpen(int files)
{
    std::vector<int> opened;
    while (static_cast<int>(opened.size()) < files) {
        const int descriptor = eventfd(0, EFD_CLOEXEC);
        if (descriptor < 0)
            break;
        opened.push_back(descriptor);
    }
    std::ranges::for_each(opened, close);
    return static_cast<int>(opened.size()) == files;
}

bool CanStart(int threads)
{
    std::counting_semaphore<> end(0);
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, static_cast<std::size_t>(PTHREAD_STACK_MIN));
    std::vector<pthread_t> started;
    const auto wait = [](void* until) -> void* {
        static_cast<std::counting_semaphore<>*>(until)->acquire();
        return nullptr;
    };
    pthread_t thread{};
    while (static_cast<int>(started.size()) < threads && pthread_create(&thread, &small, wait, &end) == 0)
        started.push_back(thread);
    pthread_attr_destroy(&small);
    end.release(static_cast<std::ptrdiff_t>(started.size()));
    for (const pthread_t each : started)
        pthread_join(each, nullptr);
    return static_cast<int>(started.size()) == threads;
}

bool CanReserve(std::size_t addresses)
{
    if (addresses == 0)
        return true;
    void* piece = mmap(nullptr, addresses, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return piece != MAP_FAILED && munmap(piece, addresses) == 0;
}

} // namespace

void RaiseFileLimit()
{
    rlimit limit = FileLimit();
    if (limit.rlim_cur >= kUsualFileLimit)
        return;
    limit.rlim_cur = std::min(limit.rlim_max, kUsualFileLimit);
    setrlimit(RLIMIT_NOFILE, &limit);
}

std::optional<std::string> WhatIsLacking(const Room& room)
{
    if (FileLimit().rlim_cur < static_cast<rlim_t>(room.fileLimit) || !CanOpen(room.files))
        return Words("the system lets the program open too few files.");
    if (!CanStart(room.threads))
        return Words("the system lets the program start too few processes or threads.");
    if (!CanReserve(room.addresses))
        return Words("the system lets the program have too few addresses of memory.");
    return std::nullopt;
}

} // namespace vantro
