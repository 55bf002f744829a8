#pragma once

#include <zelm/Export.h>

#include <cstdint>

namespace Zelm::Private {

/// What spreads from one change: all notifications that follow from it by way of parents and links. A change
/// that any other subscriber makes on the way begins a wave of its own. By its number a link tells the wave
/// that comes back to it in a circle from the next change of its target.
class ZELM_EXPORT NotificationWave {
public:
    /// The number of no wave: what is published there begins one.
    static constexpr std::uint64_t kNone = 0;

    /// Puts this thread into the wave `number`, for the time of a block.
    explicit NotificationWave(std::uint64_t number) noexcept;
    NotificationWave(const NotificationWave&) = delete;
    NotificationWave& operator=(const NotificationWave&) = delete;
    ~NotificationWave();

    static std::uint64_t newNumber() noexcept;
    /// The wave that this thread is in, or a new one.
    static std::uint64_t currentOrNew() noexcept;

private:
    std::uint64_t outer_;
};

enum class EntityActivity { Loading, Saving, Cleaning, Forwarding };

/// What an entity is in the middle of. Subscribers and derived classes may call it again from there, so that
/// whatever must not run within itself asks here first; and they may destroy it, so that whoever goes on
/// afterwards asks its scope whether there is still an entity.
class ZELM_EXPORT EntityActivities {
public:
    /// One activity, for the time of a block.
    class ZELM_EXPORT Scope {
    public:
        Scope(EntityActivities& activities, EntityActivity kind, std::uint64_t wave = 0) noexcept;
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope();

        bool entityIsGone() const noexcept { return !activities_; }

    private:
        friend class EntityActivities;

        EntityActivities* activities_;
        Scope* outer_;
        EntityActivity kind_;
        std::uint64_t wave_;
    };

    EntityActivities() = default;
    EntityActivities(const EntityActivities&) = delete;
    EntityActivities& operator=(const EntityActivities&) = delete;
    ~EntityActivities();

    bool isUnderWay(EntityActivity kind, std::uint64_t wave = 0) const noexcept;

private:
    Scope* innermost_ = nullptr;
};

} // namespace Zelm::Private
