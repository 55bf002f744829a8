#include <zelm/entities/EntityActivity.h>

namespace Zelm::Private {

namespace {

thread_local std::uint64_t t_currentWave = NotificationWave::kNone;
thread_local std::uint64_t t_lastWave = NotificationWave::kNone;

} // namespace

NotificationWave::NotificationWave(std::uint64_t number) noexcept : outer_(t_currentWave) {
    t_currentWave = number;
}

NotificationWave::~NotificationWave() {
    t_currentWave = outer_;
}

std::uint64_t NotificationWave::newNumber() noexcept {
    return ++t_lastWave;
}

std::uint64_t NotificationWave::currentOrNew() noexcept {
    return t_currentWave == kNone ? newNumber() : t_currentWave;
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
