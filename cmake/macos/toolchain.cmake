# Builds for macOS on Linux: zig's clang with Darwin's C and C++ headers, and sdk/ beside this file,
# which declares what wakerly calls of the frameworks and which libraries export it. A Mac needs
# nothing of this.
#
# WAKERLY_ZIG names the compiler, WAKERLY_TARGET what it builds for, as in "x86_64-macos.10.13".

set(CMAKE_SYSTEM_NAME Darwin)
string(REGEX MATCH "^[^-]+" CMAKE_SYSTEM_PROCESSOR "${WAKERLY_TARGET}")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WAKERLY_ZIG WAKERLY_TARGET)

set(CMAKE_C_COMPILER "${WAKERLY_ZIG}" cc -target ${WAKERLY_TARGET})  # GoogleTest asks for one
set(CMAKE_CXX_COMPILER "${WAKERLY_ZIG}" c++ -target ${WAKERLY_TARGET})
set(CMAKE_OBJCXX_COMPILER ${CMAKE_CXX_COMPILER})
find_program(CMAKE_AR llvm-ar REQUIRED)
find_program(CMAKE_RANLIB llvm-ranlib REQUIRED)
find_program(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-14 llvm-install-name-tool REQUIRED)
# The target names the system's version; there is no SDK to look for.
set(CMAKE_OSX_SYSROOT "" CACHE STRING "")
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "")

set(sdk "${CMAKE_CURRENT_LIST_DIR}/sdk")
set(frameworks "${sdk}/System/Library/Frameworks")
# What the oldest system lacks does not compile: zig takes the C++ library for its own, of which it
# has everything.
string(CONCAT CMAKE_CXX_FLAGS_INIT "-iframework ${frameworks} -Werror=unguarded-availability "
  "-U_LIBCPP_HAS_NO_VENDOR_AVAILABILITY_ANNOTATIONS")
# zig names the language to clang once more.
set(CMAKE_OBJCXX_FLAGS_INIT "${CMAKE_CXX_FLAGS_INIT} -Wno-unused-command-line-argument")
# The C++ library is the system's; for -lc++ zig would link its own into the program.
set(linking "-F${frameworks} -L${sdk}/usr/lib -nostdlib++")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${linking}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${linking}")
set(CMAKE_CXX_STANDARD_LIBRARIES "${sdk}/usr/lib/libc++.tbd")
set(CMAKE_OBJCXX_STANDARD_LIBRARIES "${CMAKE_CXX_STANDARD_LIBRARIES}")

# Of this machine's headers, these two libraries' and no others: they are the same on every system.
set(headers "${CMAKE_BINARY_DIR}/headers")
file(MAKE_DIRECTORY "${headers}")
foreach(header boost CLI expat.h expat_external.h nlohmann)
  file(CREATE_LINK "/usr/include/${header}" "${headers}/${header}" SYMBOLIC)
endforeach()
foreach(library Boost CLI11 EXPAT JSON)
  set(${library}_INCLUDE_DIR "${headers}" CACHE PATH "")
endforeach()
set(Boost_NO_BOOST_CMAKE ON)
set(EXPAT_LIBRARY "${sdk}/usr/lib/libexpat.tbd" CACHE FILEPATH "")
