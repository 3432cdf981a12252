target_sources(marvik_core PRIVATE
  app/Config.cpp app/Config.h
  app/DataFolder.cpp app/DataFolder.h
  app/Log.cpp app/Log.h
  app/Number.cpp app/Number.h
  app/Placement.cpp app/Placement.h
  app/TextCodec.cpp app/TextCodec.h
  app/TextFile.cpp app/TextFile.h)
