// The files of the page, which are built into the program.
#pragma once

#include <string_view>
#include <vector>

namespace console {

struct PageFile {
    std::string_view name;
    std::string_view bytes;
};

// None when the program was built without npm.
const std::vector<PageFile>& page_files();

}  // namespace console
