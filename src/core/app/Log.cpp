// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/app/Log.h"

namespace marvik {
// Debug messages only on request (QT_LOGGING_RULES="marvik.*.debug=true"):
// a user's terminal should hear of problems, not of every download.
Q_LOGGING_CATEGORY(lcApp, "marvik.app", QtInfoMsg)
Q_LOGGING_CATEGORY(lcLists, "marvik.lists", QtInfoMsg)
Q_LOGGING_CATEGORY(lcLookup, "marvik.lookup", QtInfoMsg)
Q_LOGGING_CATEGORY(lcMaps, "marvik.maps", QtInfoMsg)
Q_LOGGING_CATEGORY(lcShare, "marvik.share", QtInfoMsg)
Q_LOGGING_CATEGORY(lcI18n, "marvik.i18n", QtInfoMsg)
Q_LOGGING_CATEGORY(lcLogs, "marvik.logs", QtInfoMsg)
Q_LOGGING_CATEGORY(lcDialogs, "marvik.dialogs", QtInfoMsg)
} // namespace marvik
