/// Several threads that do the same.

#pragma once

#include <thread>
#include <vector>

/// Calls `run` with 0 up to `count` on a thread each, and waits for all.
template <class Run>
void OnThreads(unsigned count, Run const& run)
{
    std::vector<std::thread> threads;
    for (unsigned i = 0; i < count; ++i) {
        threads.emplace_back([&run, i] { run(i); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}
