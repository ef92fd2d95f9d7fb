# Makes zet's own package with makezet: the build target "package" runs this script with
# BUILD_DIR, SOURCE_DIR, MAKEZET (the program just built) and OUTPUT (the package file).
#
# The package holds what "cmake --install" puts under the prefix /usr: the programs and their
# names, the languages, the manual pages and the completion, and install/ from this directory.
# The links of the staged tree become lines of install/doinst.sh through makezet, except the
# tool links under /lib/zetutils: a member "lib/" would replace a /lib that is a link to
# usr/lib, so the package holds no lib/ at all, and its scripts make the directory and links.
#
# The build stamp and the time of every member come from the sources: SOURCE_DATE_EPOCH when
# set, else the time of the last commit of a git checkout, else the release date below. So the
# same commit always gives the same package, byte for byte.
cmake_minimum_required(VERSION 3.16)

# 1 November 2026, 00:00 UTC.
set(RELEASE_EPOCH 1793491200)

if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
  execute_process(COMMAND git -C ${SOURCE_DIR} log -1 --format=%ct
    OUTPUT_VARIABLE epoch OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE failed ERROR_QUIET)
  if(failed OR NOT epoch MATCHES "^[0-9]+$")
    set(epoch ${RELEASE_EPOCH})
  endif()
  set(ENV{SOURCE_DATE_EPOCH} ${epoch})
endif()
# The format honours SOURCE_DATE_EPOCH in place of the clock.
string(TIMESTAMP stamp "%d%m%Y" UTC)

set(stage ${BUILD_DIR}/package-stage)
set(control ${BUILD_DIR}/package-control)
file(REMOVE_RECURSE ${stage} ${control})

# An installation writes its manifest into the build tree; that of a real one is kept.
set(manifest ${BUILD_DIR}/install_manifest.txt)
if(EXISTS ${manifest})
  file(RENAME ${manifest} ${manifest}.kept)
endif()
execute_process(COMMAND ${CMAKE_COMMAND} -E env DESTDIR=${stage}
  ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix /usr OUTPUT_QUIET RESULT_VARIABLE failed)
file(REMOVE ${manifest})
if(EXISTS ${manifest}.kept)
  file(RENAME ${manifest}.kept ${manifest})
endif()
if(failed)
  message(FATAL_ERROR "the staged installation into ${stage} failed")
endif()

# The tool links. preinst.sh makes them ahead of every unpacking: an upgrade to a package of
# the same full name removes the old one, its tools with it, before it unpacks the new one a
# second time. doinst.sh names each by its pair of lines, for a removal to find.
file(GLOB tools RELATIVE ${stage}/lib/zetutils ${stage}/lib/zetutils/*)
list(SORT tools)
set(preinst "# zet unpacks every package with the tar behind /lib/zetutils.\nmkdir -p lib/zetutils\n")
set(doinst "mkdir -p lib/zetutils\n")
foreach(tool ${tools})
  file(READ_SYMLINK ${stage}/lib/zetutils/${tool} target)
  string(APPEND preinst "ln -sf ${target} lib/zetutils/${tool}\n")
  string(APPEND doinst "( cd lib/zetutils ; rm -rf ${tool} )\n"
    "( cd lib/zetutils ; ln -sf ${target} ${tool} )\n")
endforeach()
# The directory is in no file list. A removal reads this line, which never runs, after the
# links above, and takes the emptied directory away with them.
string(APPEND doinst "if false; then\n( cd lib ; rm -rf zetutils )\nfi\n")
file(REMOVE_RECURSE ${stage}/lib/zetutils)
file(GLOB rest ${stage}/lib/*)
if(rest)
  message(FATAL_ERROR "the staged installation holds more under lib/ than zetutils: ${rest}")
endif()
file(REMOVE_RECURSE ${stage}/lib)

# The control files get fixed modes, whatever the checkout and the umask gave them.
file(WRITE ${control}/install/preinst.sh "${preinst}")
file(WRITE ${control}/install/doinst.sh "${doinst}")
file(COPY ${SOURCE_DIR}/package/install ${control}/install DESTINATION ${stage}
  FILE_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ
  DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
  WORLD_READ WORLD_EXECUTE)

execute_process(COMMAND ${MAKEZET} --build ${stamp} ${stage} ${OUTPUT} RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "makezet could not make ${OUTPUT}")
endif()
file(REMOVE_RECURSE ${stage} ${control})
message(STATUS "zet's package: ${OUTPUT} (build stamp ${stamp})")
