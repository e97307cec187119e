#include "tests/explore/faults/fault.h"

#include <algorithm>
#include <cstdio>

namespace explore {

namespace {

constexpr std::uint32_t general_error = 0x8000;
constexpr std::uint32_t adapter_missing = 0x8703;
constexpr std::uint32_t beyond_all_codes = 0xFFFFFFFF;

struct Function {
    Call call;
    std::vector<std::uint64_t> numbers;
    std::vector<Trouble> odd;
};

const std::vector<Function>& functions() {
    static const auto& all = *new std::vector<Function>{
        {Call::init, {Fault::whatever}, {}},
        {Call::get_sdk_version, {Fault::whatever}, {{"strange", {.result = beyond_all_codes}}}},
        {Call::enum_camera_objects,
         {Fault::whatever},
         {{"no-adapter", {.result = adapter_missing}},
          {"null", {.odd = Odd::null}},
          {"empty", {.odd = Odd::empty}},
          {"lent-on-failure", {.result = general_error, .odd = Odd::lent_on_failure}},
          {"missing-camera", {.odd = Odd::missing_camera}},
          {"nameless-camera", {.odd = Odd::nameless_camera}}}},
        {Call::release_enumeration, {Fault::whatever}, {}},
        {Call::connect,
         {Fault::whatever},
         {{"no-handle", {.odd = Odd::empty}},
          {"handle-on-failure", {.result = general_error, .odd = Odd::lent_on_failure}}}},
        {Call::disconnect, {Fault::whatever}, {{"strange", {.result = beyond_all_codes}}}},
        {Call::release_device, {Fault::whatever}, {{"strange", {.result = beyond_all_codes}}}},
        {Call::get_properties,
         {0x0106, 0x0708, 0x070D},
         {{"null", {.odd = Odd::null}},
          {"empty", {.odd = Odd::empty}},
          {"lent-on-failure", {.result = general_error, .odd = Odd::lent_on_failure}},
          {"unreadable", {.odd = Odd::unreadable}},
          {"all-ones", {.odd = Odd::all_ones}},
          {"other-value", {.odd = Odd::other_value}}}},
        {Call::release_properties, {Fault::whatever}, {{"strange", {.result = beyond_all_codes}}}},
        {Call::set_property,
         {0x0001, 0x0106, 0x0119, 0x011A, 0x0507},
         {{"strange", {.result = beyond_all_codes}}, {"ignored", {.odd = Odd::ignored}}}},
        {Call::send_command, {0, 1}, {{"strange", {.result = beyond_all_codes}}}},
        {Call::set_save_info, {Fault::whatever}, {{"strange", {.result = beyond_all_codes}}}},
        {Call::release, {Fault::whatever}, {{"strange", {.result = beyond_all_codes}}}}};
    return all;
}

std::vector<Trouble> troubles_of(const Function& function) {
    std::vector<Trouble> troubles = {{"late", {.late = second}}, {"hangs", {.late = 60 * second}}};
    // Handing a list back has no result.
    if (function.call != Call::release_enumeration) {
        troubles.push_back({"refused", {.result = general_error}});
        troubles.push_back({"busy", {.result = busy}});
    }
    troubles.insert(troubles.end(), function.odd.begin(), function.odd.end());
    return troubles;
}

}  // namespace

const std::vector<Fault>& all_faults() {
    static const auto& all = *new std::vector<Fault>([] {
        std::vector<Fault> faults;
        for (const Function& function : functions()) {
            for (const std::uint64_t number : function.numbers) {
                for (const Trouble& trouble : troubles_of(function)) {
                    faults.push_back({function.call, number, trouble, false});
                    faults.push_back({function.call, number, trouble, true});
                }
            }
        }
        return faults;
    }());
    return all;
}

std::string to_text(const Fault& fault) {
    std::string text = name_of(fault.call);
    if (fault.number != Fault::whatever) {
        char number[16];
        std::snprintf(number, sizeof number, "/0x%04X", static_cast<unsigned>(fault.number));
        text += number;
    }
    return text + "/" + fault.trouble.name + (fault.lasting ? "/lasting" : "/once");
}

const Fault* fault_named(const std::string& text) {
    const auto found = std::find_if(all_faults().begin(), all_faults().end(),
                                    [&](const Fault& fault) { return to_text(fault) == text; });
    return found == all_faults().end() ? nullptr : &*found;
}

}  // namespace explore
