# What makes a mistake of ours harder to use against a player: the program reads pictures, logs and files from a server. Part
# of every build that is optimised and has no sanitizer in it, so that what is tested is what players get.
# packaging/linux/check-hardening looks at the built programs for it.
include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)

# On the INTERFACE library that all targets share.
function(pelloran_harden target)
  # Level 3 knows the sizes of what is allocated at run time too; the C library warns where the compiler does not.
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  set(CMAKE_REQUIRED_FLAGS "-O2 -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3 -Werror")
  check_cxx_source_compiles("#include <cstring>\nint main() { return static_cast<int>(std::strlen(\"\")); }"
    PELLORAN_FORTIFY_3)
  unset(CMAKE_REQUIRED_FLAGS)
  if(PELLORAN_FORTIFY_3)
    set(level 3)
  else()
    set(level 2)
  endif()
  # One piece each: CMake drops what it has seen before, and pelloran_test_options takes the definition away again.
  target_compile_options(${target} INTERFACE "$<${optimised}:SHELL:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${level}>")

  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER "PELLORAN_KNOWS${flag}" known)
    check_cxx_compiler_flag(${flag} ${known})
    if(${known})
      target_compile_options(${target} INTERFACE ${flag})
    endif()
  endforeach()

  # Position-independent code is what Qt asks for already. Apple's linker has no -z and makes such programs anyway.
  foreach(flag -pie -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
    string(MAKE_C_IDENTIFIER "PELLORAN_LINKS${flag}" known)
    set(CMAKE_REQUIRED_FLAGS -fPIC)
    check_linker_flag(CXX ${flag} ${known})
    unset(CMAKE_REQUIRED_FLAGS)
    if(${known})
      target_link_options(${target} INTERFACE ${flag})
    endif()
  endforeach()
endfunction()
