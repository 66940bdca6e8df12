# How everything of ours is compiled.

option(SCRIBO_WERROR "Treat warnings as errors" OFF)
option(SCRIBO_BENCH "Build the benches" ON)
option(SCRIBO_FUZZ "Build the libFuzzer targets (needs clang)" OFF)
option(SCRIBO_TRAINING_TESTS "Test the model kit too (needs the packages of training/packages.txt)" OFF)
set(SCRIBO_SANITIZE "" CACHE STRING "Sanitizer to build with: empty, address (with undefined) or thread")
set_property(CACHE SCRIBO_SANITIZE PROPERTY STRINGS "" address thread)

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Constructor arguments are named like the members they fill; only GCC's plain -Wshadow minds.
add_compile_options(-Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Woverloaded-virtual
    $<IF:$<CXX_COMPILER_ID:GNU>,-Wshadow=local,-Wshadow>)
if(SCRIBO_WERROR)
    add_compile_options(-Werror)
endif()

# A release build of Qt otherwise drops file, line and function from the log.
add_compile_definitions(QT_MESSAGELOGCONTEXT QT_NO_KEYWORDS QT_DEPRECATED_WARNINGS)

if(SCRIBO_SANITIZE STREQUAL "address")
    add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
elseif(SCRIBO_SANITIZE STREQUAL "thread")
    add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
    add_link_options(-fsanitize=thread)
elseif(SCRIBO_SANITIZE)
    message(FATAL_ERROR "SCRIBO_SANITIZE is '${SCRIBO_SANITIZE}': use address or thread")
endif()
