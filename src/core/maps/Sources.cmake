target_sources(marvik_core PRIVATE maps/Geometry.cpp maps/Geometry.h maps/Projection.cpp maps/Projection.h
  maps/MapScene.cpp maps/MapScene.h)
