#include <zelm/entities/EntityActivity.h>

namespace Zelm::Private {

namespace {

thread_local std::uint64_t t_currentWave = 0;
thread_local std::uint64_t t_lastWave = 0;

} // namespace

NotificationWave::NotificationWave(Origin origin) noexcept
    : outer_(t_currentWave),
      number_(origin == Origin::Passing && t_currentWave != 0 ? t_currentWave : ++t_lastWave) {
    t_currentWave = number_;
}

NotificationWave::~NotificationWave() {
    t_currentWave = outer_;
}

EntityActivities::Scope::Scope(EntityActivities& activities, EntityActivity kind, std::uint64_t wave) noexcept
    : activities_(&activities), outer_(activities.innermost_), kind_(kind), wave_(wave) {
    activities.innermost_ = this;
}

EntityActivities::Scope::~Scope() {
    if (activities_) {
        activities_->innermost_ = outer_;
    }
}

EntityActivities::~EntityActivities() {
    for (Scope* scope = innermost_; scope; scope = scope->outer_) {
        scope->activities_ = nullptr;
    }
}

bool EntityActivities::isUnderWay(EntityActivity kind, std::uint64_t wave) const noexcept {
    for (const Scope* scope = innermost_; scope; scope = scope->outer_) {
        if (scope->kind_ == kind && scope->wave_ == wave) {
            return true;
        }
    }
    return false;
}

} // namespace Zelm::Private
