target_sources(marvik_core PRIVATE
  lists/CallListModel.cpp lists/CallListModel.h
  lists/CallRecord.cpp lists/CallRecord.h
  lists/ListEditing.cpp lists/ListEditing.h
  lists/ListFile.cpp lists/ListFile.h
  lists/ListReaders.cpp lists/ListReaders.h
  lists/ListStore.cpp lists/ListStore.h
  lists/Thumbnails.cpp lists/Thumbnails.h)
