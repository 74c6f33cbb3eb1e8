// The models of a connection, and the names of their instances.

#include "Models.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>

#include "model/NameTable.h"
#include "services/Suggestions.h"

namespace sql {

std::optional<InstanceText> ParseInstance(std::string_view text) {
    const std::size_t sign = text.rfind('#');
    if (sign == std::string_view::npos) return std::nullopt;
    if (sign != 0 && (sign == 1 || !text.starts_with('@'))) return std::nullopt;
    const std::string_view digits = text.substr(sign + 1);
    InstanceText parsed{sign == 0 ? std::string_view() : text.substr(1, sign - 1), 0};
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, parsed.id);
    if (digits.empty() || stop != end || error != std::errc()) return std::nullopt;
    return parsed;
}

const NamedModel* Models::Find(std::string_view name) const {
    const std::string folded = kor::Folded(name);
    const auto found = std::find_if(models_.begin(), models_.end(), [&](const NamedModel& model) {
        return kor::Folded(model.name) == folded;
    });
    return found != models_.end() ? &*found : nullptr;
}

const NamedModel* Models::Holding(const SdaiModel* model) const {
    const auto found = std::find_if(models_.begin(), models_.end(), [&](const NamedModel& named) {
        return named.model.get() == model;
    });
    return found != models_.end() ? &*found : nullptr;
}

SdaiEntityInstance& Models::InstanceOf(const InstanceText& text) const {
    if (models_.empty()) throw std::runtime_error("there is no model");
    const NamedModel* named = text.model.empty() ? models_.data() : Find(text.model);
    if (named == nullptr) {
        std::vector<std::string> known;
        for (const NamedModel& model : models_) known.push_back(model.name);
        const std::string name(text.model);
        throw std::runtime_error("unknown model '" + name + "'" + kor::DidYouMean(name, known));
    }
    SdaiEntityInstance* instance = named->model->Find(text.id);
    if (instance == nullptr) {
        throw std::runtime_error("there is no instance #" + std::to_string(text.id) +
                                 " in model '" + named->name + "'");
    }
    return *instance;
}

std::string Models::NameOf(const SdaiEntityInstance& instance) const {
    const SdaiModel* model = instance.FindEntityInstanceModel();
    const NamedModel* named = IsFirst(model) ? nullptr : Holding(model);
    return (named != nullptr ? '@' + named->name : std::string()) + '#' +
           std::to_string(instance.GetInstanceNameId());
}

}  // namespace sql
