# Warnings and hardening that every target of the project is built with, and the sanitizers on request.
add_library(kestu_options INTERFACE)

target_compile_options(kestu_options INTERFACE
  -Wall -Wextra -Wpointer-arith -Wcast-align -Wformat=2 -Wno-format-nonliteral -Wundef
  $<$<COMPILE_LANGUAGE:CXX>:-Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
  $<$<BOOL:${KESTU_WERROR}>:-Werror>
  # The same sources give the same bytes in any folder; debuggers want to know it.
  -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
  $<$<CONFIG:Release>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>)

# What adds to texts: GCC 12 takes that for copying a text onto itself (its bug 105651).
add_library(kestu_text_options INTERFACE)
target_compile_options(kestu_text_options INTERFACE
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>)

if(KESTU_SANITIZE)
  target_compile_options(kestu_options INTERFACE
    -fsanitize=${KESTU_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(kestu_options INTERFACE -fsanitize=${KESTU_SANITIZE})
else()
  target_compile_options(kestu_options INTERFACE
    -fstack-protector-strong -fstack-clash-protection -fcf-protection=full
    $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=${KESTU_FORTIFY}>)
  target_link_options(kestu_options INTERFACE -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
