// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <functional>
#include <vector>

namespace marvik::bench {

/// The median wall time of `runs` calls, in milliseconds; one untimed call
/// first warms caches and lazy initialisation.
inline double medianMs(int runs, const std::function<void()> &work)
{
    work();
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        work();
        times.push_back(double(t.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace marvik::bench
