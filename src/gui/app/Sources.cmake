target_sources(marvik_gui PRIVATE app/PlaceholderWindow.cpp app/PlaceholderWindow.h)
