#pragma once

// A project with members of every kind, for tests and fuzz targets.

#include "tests/support/Library.h"

namespace Prm {

/// The set "blur" with a subset "mask".
struct Project {
    Project() {
        using Members = std::initializer_list<ParameterWithoutType*>;
        root.addParameterSet(blur);
        blur.addParameterSet(mask);
        for (ParameterWithoutType* const member : Members{&enable, &size, &title, &centre, &flag, &together})
            blur.addParameter(*member);
        for (ParameterWithoutType* const member : Members{&text, &whole, &natural, &place, &fixed, &nameless})
            mask.addParameter(*member);
        for (ParameterWithoutType* const part : Members{&x, &y})
            together.addParameter(*part);
        inner.addParameter(w);
        nameless.addParameter(z);
        nameless.addParameter(inner);
        mask.addBasicParameter(mode);
        mask.addBasicParameter(maskFile);
        for (MovedParameter* const moved : {&old, &older, &oldest})
            blur.addBasicParameter(*moved);
        old.setTargetParam(size);
        oldest.setTargetParam(old);
        addFormerNames();
        file.setTimeOfWriting(QDateTime(QDate(2021, 3, 1), QTime(14, 5, 9), Qt::UTC));
    }
    Q_DISABLE_COPY(Project)

    void addFormerNames() {
        title.addAdditionalScriptName("label");
        flag.addAdditionalScriptName("off", [](const QString& read) { return QString(read == "0" ? "1" : "0"); });
        together.addAdditionalScriptName("pair", [](const QString& read) { return read + "5"; });
        const std::pair<const char*, const char*> names[] = {
            {"width", "0"}, {"size.area", "9"}, {"area", "1"}, {"area", "2"}, {"area.view[1]", "3"}};
        for (const auto& [name, mark] : names)
            size.addAdditionalScriptName(name, [end = mark](const QString& read) { return read + end; });
    }

    Parameter<bool> enable{"enable", false, Splittable}, flag{"flag"};
    NumericParameter<double> size{"size"}, fixed{"fixed", 0, ParameterOptions()};
    NumericParameter<double> x{"x"}, y{"y"}, z{"z"}, w{"w"};
    NumericParameter<int> whole{"whole"};
    NumericParameter<unsigned int> natural{"natural", 3, Keyframed};
    Parameter<QString> title{"title"}, text{"text"};
    PointParameter centre{"centre"};
    Parameter<QPoint> place{"place", QPoint(), Splittable};
    CompoundParameter together{"together", true}, nameless, inner{"inner"};
    OwnedStaticParameter<unsigned int> mode{"mode"};
    OwnedStaticParameter<QString> maskFile{"file"};
    /// The second one has no target.
    MovedParameter old{"old"}, older{"older"}, oldest{"oldest"};
    ParameterSet mask{"mask"}, blur{"blur"}, root;
    ProjectFile file{root, "Studio"};
};

} // namespace Prm
