#pragma once

#include "host/bsc/CompositeCommand.h"
#include "prm/CompoundParameter.h"
#include "prm/MoveKeyframeEdit.h"
#include "prm/NumericParameter.h"
#include "prm/ParameterEdits.h"
#include "prm/ParameterSet.h"
#include "prm/StaticParameter.h"
#include "prm/project/Invariants.h"
#include "tests/parameter/Keying.h"

#include <QTextStream>
#include <gtest/gtest.h>

#include <memory>
#include <string>

/// A small project to edit: a keyed number with a split view, one without keyframes, a master with two parameters
/// constrained to it, a compound, a compound in one that is keyed together, a static text.
struct World {
    /// With so many more keyframes behind the others.
    explicit World(int more = 0) {
        key(*number, {{0, 1.}, {10, 2.}, {20, 4.}});
        number->vSetInterpolationData({Prm::Interpolation::Bezier, 0.2, 0.3, 0.7, 1.5}, 0, Prm::View(0));
        // A shape that is a straight line, and must stay one.
        number->vSetInterpolationData({Prm::Interpolation::Bezier, 0, 0, 0, 0}, 1, Prm::View(0));
        number->setVariantValue(9., still());
        key(*number, {{5, 7.}}, 1);
        plain->vSetValue(3, still());
        key(*master, {{0, 5.}, {8, 6.}});
        key(*tied, {{2, -1.}, {4, -2.}});
        for (const auto& child : {tied, second})
            master->bAddConstrainedParameter(child.get());
        for (const auto& part : {x, y})
            position->addParameter(part);
        key(*x, {{0, 1.}, {6, 2.}});
        key(*y, {{6, 3.}, {9, 4.}});
        key(*joined, {{0, 1.}, {10, 2.}});
        key(*joined, {{10, 3.}, {50, 7.}}, 1);
        joined->setSplittable(false);
        pair->addParameter(joined);
        outer->addParameter(pair);
        outer->addParameter(far);
        key(*far, {{15, 1.}}, 2);
        for (int i = 0; i < more; ++i) {
            for (const auto& parameter : {number, tied, joined, x, y, far})
                key(*parameter, {{1000 + i, i * 1.}});
            key(*number, {{1000 + i, i * 2.}}, 1);
        }
        for (const auto& parameter : {number, plain, master, tied, second})
            set->addParameter(parameter);
        set->addParameter(position);
        set->addParameter(outer);
        set->adoptBasicParameter(std::unique_ptr<Prm::BasicParameter>(text));
        set->assignNamePrefixes();
    }

    template <class P> using Shared = boost::shared_ptr<P>;
    using Number = Prm::NumericParameter<double>;

    /// All that an undo has to bring back: the project text, and exactly what that rounds or leaves out.
    std::string state() const {
        EXPECT_EQ(Prm::detail::verify(*set).toStdString(), "");
        QString written;
        QTextStream stream(&written);
        set->bStreamOut(stream, QString(), true);
        for (const auto& parameter : {number, plain, joined, far, master, tied, second, x, y})
            write(stream, *parameter);
        return written.toStdString();
    }

    static void write(QTextStream& stream, const Number& parameter) {
        stream << parameter.scriptName() << ": " << parameter.isLocked() << parameter.isHidden()
               << parameter.splittable() << parameter.isSplit() << ' ';
        for (const Prm::ParameterWithoutType* child : parameter.constrainedParameters())
            stream << child->scriptName() << ' ';
        for (const Prm::View view : parameter.viewList()) {
            stream << view.id() << ' ' << QString::number(parameter.staticValue(view), 'g', 17) << '\n';
            for (unsigned i = 0; i < parameter.keyframeCount(view); ++i) {
                const auto keyframe = parameter.keyframe(i, view);
                const Prm::IType& curve = keyframe.interpolationData;
                stream << static_cast<quint32>(curve.interpolation) << ' ';
                for (const double exact :
                     {keyframe.time.toDouble(), keyframe.value, curve.x1, curve.y1, curve.x2, curve.y2})
                    stream << QString::number(exact, 'g', 17) << ' ';
            }
        }
        stream << '\n';
    }

    Shared<Number> number{new Number("number")};
    Shared<Number> plain{new Number("plain", 0, Prm::Splittable)};
    /// Of several views with data that are not told apart.
    Shared<Number> joined{new Number("joined")};
    Shared<Number> master{new Number("master")};
    Shared<Number> tied{new Number("tied")};
    Shared<Number> second{new Number("second")};
    Shared<Number> x{new Number("x")};
    Shared<Number> y{new Number("y")};
    Shared<Prm::CompoundParameter> position{new Prm::CompoundParameter("position", true)};
    Shared<Prm::CompoundParameter> pair{new Prm::CompoundParameter("pair")};
    Shared<Number> far{new Number("far")};
    Shared<Prm::CompoundParameter> outer{new Prm::CompoundParameter("outer", true)};
    Prm::OwnedStaticParameter<QString>* text = new Prm::OwnedStaticParameter<QString>("text", "old");
    std::unique_ptr<Prm::ParameterSet> set = std::make_unique<Prm::ParameterSet>("set");
};
