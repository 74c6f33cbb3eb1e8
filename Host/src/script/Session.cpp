// The data sets of a session.

#include "script/Session.h"

#include <algorithm>
#include <utility>

#include "KORDMInstance.h"

namespace host {

std::vector<std::string> EntityNames(const kor::Model& model) {
    std::vector<std::string> names = model.GetSchema().EntityNames();
    for (const kor::ModelType& type : model.Types()) {
        if (!type.entity->IsDeclared()) names.emplace_back(type.entity->Name().View());
    }
    return names;
}

void Session::Add(NamedModel model) {
    KORDMStore::AddFamilies(model.Model());
    model.savedCount = model.Model().InstanceCount();
    models_.push_back(std::move(model));
}

void Session::NoteChange(const SdaiModel* model) {
    for (NamedModel& named : models_) {
        if (model == nullptr || named.dataSet.model.get() == model) named.changed = true;
    }
}

void Session::NoteSaved(std::string_view name) {
    for (NamedModel& named : models_) {
        if (named.name != name) continue;
        named.changed = false;
        named.savedCount = named.Model().InstanceCount();
    }
}

std::vector<std::string> Session::ModelNames() const {
    std::vector<std::string> names;
    for (const NamedModel& model : models_) names.push_back(model.name);
    return names;
}

std::string Session::KnownModels() const {
    std::string known;
    for (const NamedModel& model : models_)
        known += (known.empty() ? "; known: " : ", ") + model.name;
    if (known.empty()) return " (--model FILE gives one, --new NAME=SCHEMA an empty one)";
    return known + " (--new NAME=SCHEMA makes an empty one)";
}

const NamedModel* Session::Find(std::string_view name) const {
    const auto found = std::find_if(models_.begin(), models_.end(),
                                    [&](const NamedModel& model) { return model.name == name; });
    return found != models_.end() ? &*found : nullptr;
}

const NamedModel* Session::Holding(const SdaiModel* model) const {
    const auto found = std::find_if(models_.begin(), models_.end(), [&](const NamedModel& named) {
        return named.dataSet.model.get() == model;
    });
    return found != models_.end() ? &*found : nullptr;
}

}  // namespace host
