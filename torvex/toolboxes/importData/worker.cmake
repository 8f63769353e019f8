target_sources(importdata PRIVATE ImageLoaderWorker.h ImageLoaderWorker.cpp)
