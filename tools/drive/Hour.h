#pragma once

#include "Hands.h"
#include "Watch.h"

#include "Studio.h"

#include <functional>

namespace morvane {

// An hour of ordinary use in a minute: the whole application under real keys and the pointer. After each part
// it is looked at whether the window still answers, is laid out, and has complained about nothing; the first
// part after which it isn't so throws, and says which.
class Hour {
public:
    Hour(Studio &studio, Watch &watch);

    void use(int rounds);

    // The window at its usual widths, with an answer in it and empty, as pictures of that studio.
    void takePictures();

    // What a first start shows, on the screen that there is.
    void lookAtFirstStart();

private:
    void part(const char *name, const std::function<void()> &work);
    void write();
    void stop();
    void readOn();
    void tabAround();
    void resize();
    void configure();
    void organise();
    void lookAtEdges();
    void look(const char *name);

    [[nodiscard]] QQuickItem *item(const char *objectName) const;
    void expect(bool holds, const QString &what) const;

    Studio &m_studio;
    Watch &m_watch;
    Hands m_hands;
};

} // namespace morvane
