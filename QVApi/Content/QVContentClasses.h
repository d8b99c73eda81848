#pragma once

#include "QVApi/Content/QVContentItem.h"

#include <span>

// Every class of the content model. Both ends of the link must know the same ones: a program that
// calls this has them all linked, also those that it never names, so that archives of them can be
// restored.
std::span<const QVContentClass* const> qvContentClasses();
