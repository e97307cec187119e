# cmake -DFOLDER=... -DOUTPUT=... -P embed.cmake: a C++ source with every file of the folder; without one, with none.
set(arrays "")
set(entries "")
set(files "")
if(FOLDER AND EXISTS "${FOLDER}")
    file(GLOB files LIST_DIRECTORIES false RELATIVE "${FOLDER}" "${FOLDER}/*")
endif()
set(number 0)
foreach(file IN LISTS files)
    file(READ "${FOLDER}/${file}" bytes HEX)
    if(NOT bytes)
        continue()
    endif()
    string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
    string(APPEND arrays "const unsigned char file_${number}[] = {\n    ${bytes}\n};\n")
    string(APPEND entries "        {\"${file}\", {reinterpret_cast<const char*>(file_${number}), sizeof file_${number}}},\n")
    math(EXPR number "${number} + 1")
endforeach()
file(WRITE "${OUTPUT}.new" "// Written by cmake/embed.cmake.
#include \"tether/console/page_files.h\"

namespace console {
namespace {

${arrays}
}  // namespace

const std::vector<PageFile>& page_files() {
    static const std::vector<PageFile> files{
${entries}    };
    return files;
}

}  // namespace console
")
file(COPY_FILE "${OUTPUT}.new" "${OUTPUT}")
file(REMOVE "${OUTPUT}.new")
