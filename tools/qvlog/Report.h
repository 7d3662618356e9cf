// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include "LoggedEntry.h"
#include "Options.h"
#include "Output.h"

#include <memory>

/// Writes entries, one by one, in one of the formats.
class Report {
public:
    virtual ~Report() = default;

    virtual void begin() { }
    virtual void write(LoggedEntry const& entry) = 0;
    virtual void end() { }
};

/// @p output outlives the report.
std::unique_ptr<Report> makeReport(Format format, Output& output);
