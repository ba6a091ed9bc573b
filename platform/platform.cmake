# The sources of the seam for the system that is built for, and what they need of it.

if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  message(FATAL_ERROR "There is no platform/ for ${CMAKE_SYSTEM_NAME} yet.")
endif()

set(PLATFORM_SOURCES
  platform/linux/application.cpp platform/linux/bundle.cpp platform/linux/console_user.cpp
  platform/linux/file_attributes.cpp platform/linux/folders.cpp platform/linux/languages.cpp
  platform/linux/md5.cpp platform/linux/named_recursive_lock.cpp
  platform/linux/password_entry.cpp platform/linux/property_list.cpp
  platform/linux/semaphore_name.cpp platform/linux/system_version.cpp
  platform/linux/thread_id.cpp)
find_library(MD_LIBRARY NAMES libmd.a md REQUIRED)
set(PLATFORM_LIBRARIES ${MD_LIBRARY} ${CMAKE_DL_LIBS})
