# The sources of the seam for the system that is built for, and what they need of it.

set(PLATFORM_SOURCES
  platform/linux/application.cpp platform/linux/bundle.cpp platform/linux/console_user.cpp
  platform/linux/file_attributes.cpp platform/linux/folders.cpp platform/linux/languages.cpp
  platform/linux/named_recursive_lock.cpp platform/linux/password_entry.cpp
  platform/linux/property_list.cpp platform/linux/system_version.cpp platform/linux/thread_id.cpp)
set(PLATFORM_LIBRARIES ${CMAKE_DL_LIBS})
