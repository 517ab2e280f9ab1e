# The version the programs report, worked out once at configure time:
#   SB_GIT_DESCRIPTION  "git describe" of the checkout ("" outside a checkout)
#   SB_SOURCE_DATE      the date of the sources, YYYY-MM-DD: SOURCE_DATE_EPOCH
#                       when set (as package builders set it), else the date of
#                       the commit; "" when neither is known
# Neither depends on when or where the build runs, so two builds of one commit
# give the same programs. The project version itself is PROJECT_VERSION.

find_package(Git QUIET)

set(SB_GIT_DESCRIPTION "")
set(SB_SOURCE_DATE "")
set(sb_commit_epoch "")
if(GIT_FOUND AND EXISTS ${CMAKE_SOURCE_DIR}/.git)
  execute_process(COMMAND ${GIT_EXECUTABLE} describe --tags --always --dirty
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
    OUTPUT_VARIABLE SB_GIT_DESCRIPTION OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  execute_process(COMMAND ${GIT_EXECUTABLE} log -1 --format=%ct
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
    OUTPUT_VARIABLE sb_commit_epoch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)

  # Configure again when the checkout moves to another commit, so that the
  # description never names a commit the build is not made from.
  execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --git-path HEAD
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
    OUTPUT_VARIABLE sb_head_file OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  execute_process(COMMAND ${GIT_EXECUTABLE} symbolic-ref -q HEAD
    WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
    OUTPUT_VARIABLE sb_branch OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  set(sb_watched ${sb_head_file})
  if(sb_branch)
    execute_process(COMMAND ${GIT_EXECUTABLE} rev-parse --git-path ${sb_branch}
      WORKING_DIRECTORY ${CMAKE_SOURCE_DIR}
      OUTPUT_VARIABLE sb_branch_file OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    list(APPEND sb_watched ${sb_branch_file})
  endif()
  foreach(file IN LISTS sb_watched)
    get_filename_component(file ${file} ABSOLUTE BASE_DIR ${CMAKE_SOURCE_DIR})
    if(EXISTS ${file})
      set_property(DIRECTORY ${CMAKE_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
    endif()
  endforeach()
endif()

# string(TIMESTAMP) reads SOURCE_DATE_EPOCH itself; the commit's time stands in
# for it when it is not set.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  string(TIMESTAMP SB_SOURCE_DATE "%Y-%m-%d" UTC)
elseif(sb_commit_epoch)
  set(ENV{SOURCE_DATE_EPOCH} ${sb_commit_epoch})
  string(TIMESTAMP SB_SOURCE_DATE "%Y-%m-%d" UTC)
  unset(ENV{SOURCE_DATE_EPOCH})
endif()

message(STATUS "Soilbench ${PROJECT_VERSION}, git \"${SB_GIT_DESCRIPTION}\", source date \"${SB_SOURCE_DATE}\"")
