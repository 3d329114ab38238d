# Flags that every target of this tree is built with.
#   Qel::warnings  the warnings of the house, and errors out of them with QEL_WERROR

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)

# Contraction would let results differ between processor levels; a unique symbol would keep a plugin
# mapped after it has been closed.
add_compile_options(-ffp-contract=off)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-fno-gnu-unique)
endif()
if(QEL_SANITIZE)
    add_compile_options(-fsanitize=${QEL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${QEL_SANITIZE})
endif()

# -Wnon-virtual-dtor of g++ also names every listener, final or not, since the destructor of FrameListener is
# public and not virtual. -Wdelete-non-virtual-dtor, part of -Wall, is there for both compilers.
add_library(qelWarnings INTERFACE)
add_library(Qel::warnings ALIAS qelWarnings)
target_compile_options(qelWarnings INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Woverloaded-virtual
    $<$<CXX_COMPILER_ID:Clang>:-Wnon-virtual-dtor>
    $<$<BOOL:${QEL_WERROR}>:-Werror>)
