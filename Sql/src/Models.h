// The models of a connection, in the order in which they were opened, and how SQL names their
// instances: by the number, of the first model; by a text '#12' or '@model#12'.

#ifndef SQL_MODELS_H
#define SQL_MODELS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/Model.h"

namespace sql {

struct NamedModel {
    std::string name;  // UTF-8
    std::shared_ptr<const kor::Model> model;
};

// '#12' or '@model#12', taken apart.
struct InstanceText {
    std::string_view model;  // empty for the first one
    std::uint64_t id;
};

// Nothing for a text of any other form.
std::optional<InstanceText> ParseInstance(std::string_view text);

class Models {
  public:
    void Add(NamedModel model) { models_.push_back(std::move(model)); }
    // Lets go of the models of which the predicate holds.
    void Remove(const std::function<bool(const NamedModel&)>& isGone) {
        std::erase_if(models_, isGone);
    }

    const std::vector<NamedModel>& All() const { return models_; }

    // Null where there is none; names match as those of databases do, without regard to case.
    const NamedModel* Find(std::string_view name) const;
    const NamedModel* Holding(const SdaiModel* model) const;

    bool IsFirst(const SdaiModel* model) const {
        return !models_.empty() && models_.front().model.get() == model;
    }

    // Throw std::runtime_error where there is no such model or instance.
    SdaiEntityInstance& InstanceOf(const InstanceText& text) const;
    SdaiEntityInstance& InstanceNumbered(std::uint64_t id) const { return InstanceOf({{}, id}); }

    // '#12' or '@model#12'.
    std::string NameOf(const SdaiEntityInstance& instance) const;

  private:
    std::vector<NamedModel> models_;
};

}  // namespace sql

#endif
