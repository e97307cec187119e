#pragma once

#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "simulator/camera/pictures.h"

using DrawFunction = int(const CameraSimPicture*);

// The module as the simulated SDK loads it, and a folder of the test's own that goes when it ends.
class PictureTest : public testing::Test {
  protected:
    PictureTest();
    ~PictureTest() override;

    // A picture that asks for nothing special, at a path in the folder.
    CameraSimPicture picture(const std::string& path) const;

    std::string path(const std::string& name) const;
    std::vector<std::string> files() const;

    // Draw anew where an earlier picture of the test lies: the module itself replaces nothing.
    int draw_jpeg(const CameraSimPicture* picture) const;
    int draw_raw(const CameraSimPicture* picture) const;

    std::string folder;
    DrawFunction* module_jpeg;
    DrawFunction* module_raw;
    DrawFunction* draw_heif;
};

std::string content(const std::string& path);

// What the program writes to standard output. A program that is not installed fails the test and
// names its Debian package; so does one that ends with an error.
std::string output_of(const std::string& program, const std::string& package,
                      const std::string& arguments);

// What exiftool prints.
std::string exiftool(const std::string& arguments);
