#include "overlay/OverlayPanel/views/Motion.h"

#include "platform/SystemSettings.h"

#include <QEasingCurve>
#include <QPointF>
#include <QVariantAnimation>

#include <cmath>
#include <utility>

namespace pelloran {

namespace {

// Quick at first, then gently into place.
QEasingCurve timingCurve() {
    QEasingCurve curve(QEasingCurve::BezierSpline);
    curve.addCubicBezierSegment(QPointF(0.22, 0.9), QPointF(0.28, 1.0), QPointF(1.0, 1.0));
    return curve;
}

// Lives until it has stopped. One that is deleted while it runs, with its target, tells nobody: its signals would still
// reach a widget that is half gone.
class Animation final : public QVariantAnimation {
public:
    Animation(QObject* target, std::function<void()> whenEnded)
        : QVariantAnimation(target)
        , ended(std::move(whenEnded)) {}

protected:
    void updateState(State newState, State oldState) override {
        QVariantAnimation::updateState(newState, oldState);
        if (newState == Stopped) {
            setObjectName(QString());
            deleteLater();
            ended();
        }
    }

private:
    std::function<void()> ended;
};

} // namespace

// Runs its function once everything it waits for has ended.
struct AnimationGroup::Completion {
    std::function<void()> run;
    int awaited = 1; // the naming of the animations counts as one

    void oneEnded() {
        if (--awaited == 0 && run) {
            run();
        }
    }
};

void AnimationGroup::animate(QObject& target, const char* name, std::function<void(double progress)> step) {
    Motion::end(target, name);
    if (duration <= 0) {
        step(1);
        return;
    }
    ++completion->awaited;
    auto* animation = new Animation(&target, [awaiting = completion] { awaiting->oneEnded(); }); // owned by the target
    animation->setObjectName(QLatin1StringView(name));
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    animation->setDuration(static_cast<int>(std::lround(duration * 1000)));
    animation->setEasingCurve(timingCurve());
    QObject::connect(animation, &QVariantAnimation::valueChanged, &target,
                     [step = std::move(step)](const QVariant& progress) { step(progress.toDouble()); });
    animation->start();
}

Motion::Motion(const SystemSettings& systemSettings, MotionPreference preferred)
    : settings(systemSettings)
    , preference(preferred) {}

bool Motion::isReduced() const {
    return preference == MotionPreference::reduced || settings.reducesMotion();
}

void Motion::run(double duration, const Animations& animations, const std::function<void()>& completion) const {
    const double effective = isReduced() ? 0 : duration;
    if (effective <= 0) {
        instant(animations);
        if (completion) {
            completion();
        }
        return;
    }
    AnimationGroup group(effective);
    group.completion = std::make_shared<AnimationGroup::Completion>(completion);
    animations(group);
    group.completion->oneEnded();
}

void Motion::instant(const Animations& animations) {
    AnimationGroup group(0);
    animations(group);
}

void Motion::end(QObject& target, const char* name) {
    if (auto* running = target.findChild<QVariantAnimation*>(QLatin1StringView(name), Qt::FindDirectChildrenOnly)) {
        running->stop();
    }
}

} // namespace pelloran
