#pragma once

// The bodies of `Parameter<T>`, for the source file that instantiates it for a type.

#include "prm/Parameter.h"
#include "prm/parameter/answers.hpp"
#include "prm/parameter/commands.hpp"
#include "prm/parameter/differences.hpp"
#include "prm/parameter/editing.hpp"
#include "prm/parameter/evaluation.hpp"
#include "prm/parameter/explaining.hpp"
#include "prm/parameter/lookup.hpp"
#include "prm/parameter/reshaping.hpp"
#include "prm/parameter/snapshot.hpp"
#include "prm/parameter/storage.hpp"
#include "prm/parameter/text.hpp"
#include "prm/parameter/variants.hpp"
#include "prm/parameter/views.hpp"
