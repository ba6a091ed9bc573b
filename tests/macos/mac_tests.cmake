# The tests that run on a Mac, over its own frameworks. They are for the processor and the system that
# they are built on, as Homebrew's GoogleTest is.

add_executable(mac_tests ${portable_tests} macos/child_processes.cpp test_support.cpp)
target_include_directories(mac_tests PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(mac_tests PRIVATE wakerly_driver wakerly_options GTest::gmock_main)

if(CMAKE_CROSSCOMPILING)
  # Built and linked alone. The C++ library is the compiler's, of which everything may be called: that
  # of the oldest system lacks std::filesystem.
  foreach(target mac_tests gtest gmock gmock_main)
    target_compile_options(${target} PRIVATE -D_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS)
  endforeach()
  target_link_options(mac_tests PRIVATE -lc++)
  return()
endif()

execute_process(COMMAND sw_vers -productVersion OUTPUT_VARIABLE system_version
                OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set_target_properties(mac_tests PROPERTIES OSX_ARCHITECTURES ${CMAKE_HOST_SYSTEM_PROCESSOR})
target_compile_options(mac_tests PRIVATE -mmacosx-version-min=${system_version})
target_link_options(mac_tests PRIVATE -mmacosx-version-min=${system_version})
# A home folder can be moved only before a process starts. Tests fork, and Foundation would end a
# child that is the first to use one of its classes.
set(home ${CMAKE_CURRENT_BINARY_DIR}/home)
file(MAKE_DIRECTORY ${home})
gtest_discover_tests(mac_tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 600 LABELS mac_tests
  ENVIRONMENT CFFIXED_USER_HOME=${home}
  # Of a list, of which a property could be, CMake 3.25 sets the first alone.
  ENVIRONMENT_MODIFICATION OBJC_DISABLE_INITIALIZE_FORK_SAFETY=set:YES)
