# The allocation routines define malloc and friends themselves: keep the
# compiler from treating those names as the built-in library functions (it
# could otherwise fold calloc's zero fill into a call to calloc).  Calls into
# zq750mem go straight through the GOT (-fno-plt): they are on every
# allocation.
set_source_files_properties(${CMAKE_CURRENT_SOURCE_DIR}/src/frame/memory.cpp PROPERTIES
  COMPILE_OPTIONS
    "-fno-plt;-fno-builtin-malloc;-fno-builtin-calloc;-fno-builtin-realloc;-fno-builtin-free")
# When the runtime is the process's allocator it must never be unloaded.
if(ZQ_EXPORT_MALLOC)
  target_link_options(zq750util PRIVATE -Wl,-z,nodelete)
endif()
