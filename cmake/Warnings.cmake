# The flags every target of this project is built with.
add_library(cqsurvey_flags INTERFACE)
target_compile_options(cqsurvey_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow
  $<$<BOOL:${CQSURVEY_WERROR}>:-Werror>)

if(CQSURVEY_SANITIZE)
  target_compile_options(cqsurvey_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(cqsurvey_flags INTERFACE -fsanitize=address,undefined)
endif()

if(CQSURVEY_COVERAGE)
  target_compile_options(cqsurvey_flags INTERFACE --coverage)
  target_link_options(cqsurvey_flags INTERFACE --coverage)
endif()
