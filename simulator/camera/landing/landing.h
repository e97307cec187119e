// Where a shot comes down on the computer: a number of the folder that is this shot's alone, and
// files that stay hidden until they are whole, but for a file system that can neither rename
// without replacing nor link: there the file is copied into its place, and seen while it grows.
// Nothing that lies in the folder is ever replaced or written through. All of it is for the thread
// that transfers; none of it needs the lock.
//
// Two hidden names per shot, which no other program uses:
//   .DSC00001.camera-sim.lock      takes the number for as long as a live process holds its flock
//   .DSC00001.JPG.camera-sim.part  a file that is not whole yet
// A camera that was killed leaves them. The next shot into the folder removes those whose flock
// nobody holds any more; unlike a process id that cannot be mistaken for another's.
#pragma once

#include <functional>
#include <string>

namespace camera_sim {

inline constexpr unsigned last_number = 9999;  // of a shot; then comes 1
unsigned number_after(unsigned number);

class Landing {
  public:
    Landing(std::string folder, std::string prefix);
    ~Landing();  // as let_go
    Landing(const Landing&) = delete;
    Landing& operator=(const Landing&) = delete;

    // Takes the first number from `number` on of which no file lies in the folder, in any case of
    // letters and with any ending; with `beyond_all`, behind the highest one that lies there. 0 or
    // an errno value; EEXIST when every number is taken.
    int reserve(unsigned number, bool beyond_all);
    bool reserved() const;
    unsigned number() const;

    // The path to report; the number is `number` while none is reserved.
    std::string path(unsigned number, const char* ending) const;

    // Has the file of that ending made under its hidden name; 0 or what `making` returned.
    int make(const char* ending, const std::function<int(const std::string& path)>& making);
    // Half of its bytes go; 0 or an errno value.
    int halve();
    long long bytes() const;  // of the file made last; 0 when it is gone

    // Gives the file made last its name, or removes it. EEXIST: the name was taken meanwhile, by a
    // program that knows nothing of reservations; the file is gone then.
    int publish();
    void discard();

    // Gives the number back, and discards.
    void let_go();

  private:
    std::string stem(unsigned number) const;
    std::string hidden(unsigned number) const;  // path of a hidden name, up to its ending
    int take(unsigned number);

    const std::string folder_;
    const std::string prefix_;
    unsigned number_ = 0;
    int lock_ = -1;     // open while a number is reserved
    std::string made_;  // the hidden path; empty: there is no such file
    const char* ending_ = "";
};

}  // namespace camera_sim
