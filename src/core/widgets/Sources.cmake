# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_core PRIVATE
  widgets/AccessKey.cpp widgets/AccessKey.h
  widgets/ButtonProperties.cpp widgets/ButtonProperties.h
  widgets/ButtonShades.cpp widgets/ButtonShades.h)
