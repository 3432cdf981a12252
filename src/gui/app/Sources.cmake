# SPDX-License-Identifier: GPL-3.0-or-later
target_sources(marvik_gui PRIVATE
  app/AppController.cpp app/AppController.h
  app/AppIcon.cpp app/AppIcon.h
  app/Commands.cpp app/Commands.h
  app/CompositionRoot.cpp app/CompositionRoot.h
  app/MainCommands.cpp app/MainCommands.h
  app/MainWindow.cpp app/MainWindow.h
  app/Messages.cpp app/Messages.h
  app/Selection.cpp app/Selection.h
  app/StatusLine.cpp app/StatusLine.h)
