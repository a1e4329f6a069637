#pragma once

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <sstream>

/// Tries a property so often, with the same input each time, whatever the environment says.
template <class Property> void expectAlways(int times, const Property& property) {
    rc::detail::TestParams params;
    params.seed = 20;
    params.maxSuccess = times;
    const auto result = rc::detail::checkTestable(property, rc::detail::TestMetadata(), params);
    std::ostringstream text;
    rc::detail::printResultMessage(result, text);
    EXPECT_TRUE(result.template is<rc::detail::SuccessResult>()) << text.str();
}
