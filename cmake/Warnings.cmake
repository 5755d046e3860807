# The flags every target of this project is built with.
add_library(cqsurvey_flags INTERFACE)
target_compile_options(cqsurvey_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  # GCC 12 takes "text" + std::string for an overlapping copy (its bug 105651).
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<BOOL:${CQSURVEY_WERROR}>:-Werror>)

if(CQSURVEY_SANITIZE)
  target_compile_options(cqsurvey_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(cqsurvey_flags INTERFACE -fsanitize=address,undefined)
endif()

if(CQSURVEY_FUZZ)
  target_compile_options(cqsurvey_flags INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(cqsurvey_flags INTERFACE -fsanitize=address,undefined)
endif()

if(CQSURVEY_SANITIZE_THREADS)
  target_compile_options(cqsurvey_flags INTERFACE -fsanitize=thread)
  target_link_options(cqsurvey_flags INTERFACE -fsanitize=thread)
endif()

if(CQSURVEY_COVERAGE)
  target_compile_options(cqsurvey_flags INTERFACE --coverage)
  target_link_options(cqsurvey_flags INTERFACE --coverage)
endif()
