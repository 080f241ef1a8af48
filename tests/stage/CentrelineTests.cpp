#include "tools/stage/painting/Centreline.h"

#include <gtest/gtest.h>

#include <numbers>

namespace pelloran::stage {

namespace {

QPainterPath united(std::initializer_list<QRectF> boxes) {
    QPainterPath all;
    for (const QRectF& box : boxes) {
        QPainterPath one;
        one.addRect(box);
        all = all.united(one);
    }
    return all;
}

QPainterPath ring() {
    QPainterPath path;
    path.addEllipse(QPointF(0, 0), 42, 42);
    path.addEllipse(QPointF(0, 0), 38, 38);
    return path; // odd and even: the inner one is a hole
}

QPainterPath brushed() {
    QPainterPath path;
    path.addPolygon(QPolygonF{{0, -2}, {100, -5}, {100, 5}, {0, 2}});
    return path;
}

} // namespace

TEST(Centreline, RunsInTheMiddleOfStrokes) {
    struct Row {
        const char* why;
        QPainterPath shape;
        double length;
        double tolerance;
        QRectF box;
    };

    const double round = 2 * std::numbers::pi * 40;
    const Row rows[] = {
        {"nothing", {}, 0, 0, {}},
        {"a level bar loses half its width at either end", united({{0, 0, 100, 8}}), 92, 4, {4, 4, 92, 0}},
        {"an upright one", united({{10, 20, 6, 90}}), 84, 4, {13, 23, 0, 84}},
        {"a stroke that grows is one line all the same", brushed(), 94, 6, {2, 0, 94, 0}},
        {"a cross", united({{0, 46, 100, 8}, {46, 0, 8, 100}}), 184, 8, {4, 4, 92, 92}},
        {"a ring is closed", ring(), round, 0.05 * round, {-40, -40, 80, 80}},
        {"two strokes apart", united({{0, 0, 60, 6}, {0, 20, 60, 6}}), 108, 8, {3, 3, 54, 20}},
        {"a corner's nose is no branch", united({{0, 0, 100, 8}, {50, -3, 3, 4}}), 92, 6, {4, 4, 92, 0}},
        {"a branch of some length stays", united({{0, 0, 100, 8}, {50, 0, 6, 40}}), 126, 8, {4, 4, 92, 33}},
        {"a dot stays a dot", united({{5, 5, 3, 3}}), 1, 2, {6, 6, 1, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.why);
        const QPainterPath line = centreline(row.shape, 7);
        EXPECT_NEAR(line.length(), row.length, row.tolerance);
        const QRectF box = line.boundingRect();
        EXPECT_NEAR(box.left(), row.box.left(), 2.5);
        EXPECT_NEAR(box.top(), row.box.top(), 2.5);
        EXPECT_NEAR(box.right(), row.box.right(), 2.5);
        EXPECT_NEAR(box.bottom(), row.box.bottom(), 2.5);
    }
}

TEST(Centreline, StaysWhereTheShapeIs) {
    const QPainterPath shape = united({{0, 0, 100, 8}});
    const QRectF here = centreline(shape, 7).boundingRect();
    EXPECT_EQ(centreline(shape.translated(-300, 70), 7).boundingRect(), here.translated(-300, 70));
}

TEST(Centreline, IsMadeOfFewPoints) {
    EXPECT_LE(centreline(united({{0, 0, 100, 8}}), 7).elementCount(), 4);
    EXPECT_LE(centreline(ring(), 7).elementCount(), 60);
}

} // namespace pelloran::stage
