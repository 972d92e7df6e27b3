# rq_compile_options(target): the warnings, visibility and sanitizers that every target of this project is built with.
function(rq_compile_options target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Woverloaded-virtual -Wswitch -Werror=switch
    $<$<BOOL:${RQ_WARNINGS_ARE_ERRORS}>:-Werror>
    # GCC 12 sees overlapping copies in std::string's operator+ that are not there.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
    -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=
    # The allocator and the host layer are called across libraries for every node.
    -fno-plt
    $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
  if(RQ_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${RQ_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${RQ_SANITIZE})
  endif()
endfunction()
