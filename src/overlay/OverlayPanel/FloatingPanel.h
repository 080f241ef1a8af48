#pragma once

#include <QWidget>

namespace pelloran {

class FloatingPanel final : public QWidget {
    Q_OBJECT

public:
    FloatingPanel() {
        resize(360, 420);
        setContextMenuPolicy(Qt::CustomContextMenu);
    }
};

} // namespace pelloran
