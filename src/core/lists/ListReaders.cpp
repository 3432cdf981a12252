// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/lists/ListReaders.h"

#include <QThread>

#ifdef Q_OS_LINUX
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#include <utility>

namespace marvik::lists {

namespace {

thread_local bool t_reader = false;

} // namespace

void becomeListReader()
{
    if (std::exchange(t_reader, true))
        return;
#ifdef Q_OS_LINUX
    // A little nicer than the window, the readers still get every core the
    // window does not want, and are never starved the way an idle-class
    // thread would be (the window may wait for one).
    ::setpriority(PRIO_PROCESS, pid_t(::syscall(SYS_gettid)), 5);
#endif
}

void giveWayToTheWindow()
{
    if (t_reader)
        QThread::yieldCurrentThread();
}

} // namespace marvik::lists
