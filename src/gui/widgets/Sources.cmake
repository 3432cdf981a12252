# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  widgets/ButtonFace.cpp widgets/ButtonFace.h
  widgets/ChameleonButton.cpp widgets/ChameleonButton.h
  widgets/ElidingLabel.cpp widgets/ElidingLabel.h)
