// Takes what is nobody's business out of lines that are to be shown to others: paths, and the names
// of cameras and files. The same name always gets the same stand-in, so that what belongs together
// still can be seen to.
#pragma once

#include <map>
#include <string>
#include <string_view>

namespace tether {

class Redaction {
  public:
    // '>' to the worker, '<' from it.
    std::string redact(char direction, std::string_view line);

  private:
    std::string file(std::string_view path);
    std::string camera(std::string_view name);
    std::string free_text(std::string_view text);

    std::map<std::string, std::string> files_;    // by name without extension
    std::map<std::string, std::string> cameras_;  // by name
};

}  // namespace tether
