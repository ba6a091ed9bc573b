# The sources of the seam for the system that is built for, and what they need of it.

if(CMAKE_SYSTEM_NAME STREQUAL "Darwin")
  set(PLATFORM_SOURCES
    platform/macos/application.mm platform/macos/bundle.mm platform/macos/console_user.mm
    platform/macos/file_attributes.cpp platform/macos/folders.mm platform/macos/languages.mm
    platform/macos/machine_code.cpp platform/macos/md5.cpp platform/macos/named_recursive_lock.mm platform/macos/processes.cpp
    platform/macos/semaphore_name.cpp platform/macos/system_version.mm
    platform/macos/thread_id.cpp)
  # File Manager, Gestalt, Launch Services' older call and MD5 are all deprecated there.
  set_source_files_properties(${PLATFORM_SOURCES}
    PROPERTIES COMPILE_OPTIONS -Wno-deprecated-declarations)
  set(PLATFORM_LIBRARIES
    "-framework CoreFoundation" "-framework CoreServices" "-framework Foundation"
    "-framework SystemConfiguration" objc)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
  set(PLATFORM_SOURCES
    platform/linux/application.cpp platform/linux/bundle.cpp platform/linux/console_user.cpp
    platform/linux/file_attributes.cpp platform/linux/folders.cpp platform/linux/languages.cpp
    platform/linux/machine_code.cpp platform/linux/md5.cpp platform/linux/named_recursive_lock.cpp
    platform/linux/processes.cpp platform/linux/property_list.cpp
    platform/linux/semaphore_name.cpp platform/linux/system_version.cpp
    platform/linux/thread_id.cpp)
  find_library(MD_LIBRARY NAMES libmd.a md REQUIRED)
  set(PLATFORM_LIBRARIES ${MD_LIBRARY} ${CMAKE_DL_LIBS})
else()
  message(FATAL_ERROR "There is no platform/ for ${CMAKE_SYSTEM_NAME}.")
endif()
list(APPEND PLATFORM_SOURCES
  platform/posix/file_descriptor.cpp platform/posix/file_stamp.cpp platform/posix/file_type.cpp
  platform/posix/folder_making.cpp platform/posix/password_entry.cpp
  platform/posix/program_file.cpp
  platform/posix/standard_error.cpp platform/posix/standard_folder.cpp)
