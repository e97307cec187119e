#include "simulator/camera/body.h"

#include "simulator/camera/landing/landing.h"
#include "simulator/sdk/text.h"

namespace camera_sim {

Body::Body() {
    properties[property::half_press] = {half_press::released};
    properties[property::file_type] = {file_type::jpeg};
    properties[property::save_destination] = {destination::card};
    properties[property::pc_remote_priority] = {priority::camera};
    properties[property::pair_transfer] = {pair::developed_half};
    properties[property::first_card] = {card_status::in};
    properties[property::second_card] = {card_status::none};
}

CrInt64u Body::value(CrInt32u code) const {
    const auto found = properties.find(code);
    return found == properties.end() ? 0 : found->second.value;
}

std::vector<CrInt32u> Body::put_card(Card state) {
    card = state;
    switch (state) {
        case Card::in:
            return put(property::first_card, card_status::in);
        case Card::full:
            return put(property::first_card, card_status::full);
        case Card::out:
            break;
    }
    return put(property::first_card, card_status::none);
}

std::vector<CrInt32u> Body::put(CrInt32u code, CrInt64u value) {
    Property& property = properties[code];
    if (property.value == value) {
        return {};
    }
    property.value = value;
    return {code};
}

CrInt32u Body::judge_write(CrInt32u code, CrInt64u value, CrInt32u type) const {
    if (properties.count(code) == 0) {
        return result::no_such_property;
    }
    if (type != CrDataType_UInt) {
        return result::value_refused;
    }
    const auto within = [value](CrInt64u first, CrInt64u last) {
        return value >= first && value <= last ? result::ok : result::value_refused;
    };
    switch (code) {
        case property::half_press:
            return within(half_press::released, half_press::pressed);
        case property::file_type:
            return within(file_type::jpeg, file_type::raw_and_heif);
        case property::save_destination:
            if (this->value(property::pc_remote_priority) != priority::pc_remote) {
                return result::priority_missing;
            }
            return within(destination::computer, destination::both);
        case property::pc_remote_priority:
            return within(priority::camera, priority::pc_remote);
        case property::pair_transfer:
            return within(pair::both_of_jpeg, pair::both_of_heif);
        case property::first_card:
        case property::second_card:
            return result::value_refused;
        default:
            return result::ok;
    }
}

void Body::set_counter(unsigned number) {
    next_number = number;
    passed = 0;
    ++counter_named;
}

void Body::pass_numbers(unsigned count, unsigned numbered_under) {
    if (numbered_under == counter_named) {
        next_number = (next_number - 1 + count) % last_number + 1;
        passed += count;
    }
}

void Body::forget_session() {
    properties[property::pc_remote_priority].value = priority::camera;
    properties[property::half_press].value = half_press::released;
}

std::string Body::describe() const {
    return (model ? in_quotes(*model) : "null") + " over " + connection.value_or("null");
}

const char* to_text(Card card) {
    switch (card) {
        case Card::in:
            return "in";
        case Card::out:
            return "out";
        case Card::full:
            break;
    }
    return "full";
}

}  // namespace camera_sim
