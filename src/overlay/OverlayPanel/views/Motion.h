#pragma once

#include <functional>
#include <memory>

class QObject;

namespace pelloran {

class SystemSettings;

// What moves together: one duration, one completion. Lives while the animations are being named.
class AnimationGroup {
public:
    // `step` is called with a progress that ends at exactly 1, on the main thread, from now on; or with 1 at once when
    // the group is instant. An animation of the same `name` of `target` that is still under way ends where it is, and
    // counts as complete. `target` must outlive what `step` touches; with it the animation goes, without completion.
    void animate(QObject& target, const char* name, std::function<void(double progress)> step);

private:
    friend class Motion;
    struct Completion;

    explicit AnimationGroup(double seconds)
        : duration(seconds) {}

    const double duration; // 0: instant
    std::shared_ptr<Completion> completion;
};

enum class MotionPreference {
    asDesktopSays,
    reduced, // whatever the desktop says
};

// All of the panel's animations: one timing curve, and none at all for who asks for less motion. Main thread.
class Motion {
public:
    using Animations = std::function<void(AnimationGroup& group)>;

    // `settings` must outlive it.
    explicit Motion(const SystemSettings& settings, MotionPreference preference = MotionPreference::asDesktopSays);

    bool isReduced() const;

    // Runs `animations` over `duration` seconds, then `completion`; both at once, before it returns, when motion is
    // reduced or the duration is 0.
    void run(double duration, const Animations& animations, const std::function<void()>& completion = {}) const;

    // Everything that `animations` names is at its end when this returns.
    static void instant(const Animations& animations);

    // Ends the animation of that name where it is.
    static void end(QObject& target, const char* name);

private:
    const SystemSettings& settings;
    const MotionPreference preference;
};

} // namespace pelloran
