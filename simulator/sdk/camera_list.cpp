#include "simulator/sdk/camera_list.h"

#include <algorithm>

#include "simulator/camera/state.h"
#include "simulator/sdk/call.h"
#include "simulator/sdk/strictness.h"

namespace camera_sim {
namespace {

constexpr std::size_t lists_kept = 64;

void expect_lent(const CameraList& list, const char* what) SIM_REQUIRES(g_lock) {
    if (list.handed_back) {
        stop(std::string(what) + " was asked of a list of cameras that was handed back already");
    }
}

}  // namespace

CameraObject::CameraObject(std::size_t the_body, std::optional<std::string> model,
                           std::optional<std::string> connection, bool is_missing)
    : body(the_body),
      missing(is_missing),
      model_(std::move(model)),
      connection_(std::move(connection)) {}

const CrChar* CameraObject::GetModel() const {
    return model_ ? model_->c_str() : nullptr;
}

const CrChar* CameraObject::GetConnectionTypeName() const {
    return connection_ ? connection_->c_str() : nullptr;
}

CameraList::CameraList(std::vector<CameraObject> cameras)
    : claimed_count(static_cast<CrInt32u>(cameras.size())), cameras_(std::move(cameras)) {}

CrInt32u CameraList::GetCount() const {
    const Hold hold;
    expect_thread("GetCount");
    expect_lent(*this, "GetCount");
    return claimed_count;
}

ICrCameraObjectInfo* CameraList::GetCameraObjectInfo(CrInt32u index) const {
    const Hold hold;
    expect_thread("GetCameraObjectInfo");
    expect_lent(*this, "GetCameraObjectInfo");
    if (index >= claimed_count) {
        stop("GetCameraObjectInfo was asked for index " + std::to_string(index) + " of " +
             std::to_string(claimed_count) + " cameras");
    }
    return index < cameras_.size() && !cameras_[index].missing ? &cameras_[index] : nullptr;
}

void CameraList::Release() {
    Hold hold;
    Call call(hold, "ReleaseEnumeration");
    expect_lent(*this, "Release");
    handed_back = true;
    auto& lent = state().lent_lists;
    lent.erase(std::remove(lent.begin(), lent.end(), this), lent.end());
    call.answer_nothing();
}

std::optional<std::size_t> CameraList::body_of(const ICrCameraObjectInfo* camera) const {
    for (const CameraObject& mine : cameras_) {
        if (&mine == camera) {
            return mine.body;
        }
    }
    return std::nullopt;
}

CameraList& lend_list(std::vector<CameraObject> cameras) {
    auto& lists = state().lists;
    while (lists.size() >= lists_kept && lists.front()->handed_back) {
        lists.pop_front();
    }
    lists.push_back(std::make_unique<CameraList>(std::move(cameras)));
    state().lent_lists.push_back(lists.back().get());
    return *lists.back();
}

}  // namespace camera_sim
