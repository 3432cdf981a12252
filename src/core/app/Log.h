// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLoggingCategory>

namespace marvik {
Q_DECLARE_LOGGING_CATEGORY(lcApp)
Q_DECLARE_LOGGING_CATEGORY(lcLists)
Q_DECLARE_LOGGING_CATEGORY(lcLookup)
Q_DECLARE_LOGGING_CATEGORY(lcMaps)
Q_DECLARE_LOGGING_CATEGORY(lcShare)
Q_DECLARE_LOGGING_CATEGORY(lcI18n)
Q_DECLARE_LOGGING_CATEGORY(lcLogs)
} // namespace marvik
