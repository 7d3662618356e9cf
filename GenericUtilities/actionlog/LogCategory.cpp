// SPDX-License-Identifier: LGPL-2.1-or-later
#include <GenericUtilities/actionlog/LogCategory.h>

#include <GenericUtilities/actionlog/Translation_p.h>

#include <algorithm>
#include <array>

namespace qv {

namespace {

    struct Category {
        ELogCategory code;
        char const* name;
    };

    constexpr std::array<Category, 35> Categories = {{
        {LogCategoryNone, QT_TRANSLATE_NOOP("ActionLog", "None")},
        {LogCategoryAccess, QT_TRANSLATE_NOOP("ActionLog", "Access")},
        {LogCategoryLogonLogoff, QT_TRANSLATE_NOOP("ActionLog", "Logon & Logoff")},
        {LogCategoryUserGroups, QT_TRANSLATE_NOOP("ActionLog", "User & Groups")},
        {LogCategoryAuthorize, QT_TRANSLATE_NOOP("ActionLog", "Authorize")},
        {LogCategorySoftwareUpdates, QT_TRANSLATE_NOOP("ActionLog", "Software updates")},
        {LogCategoryCameraSettings, QT_TRANSLATE_NOOP("ActionLog", "Camera Settings")},
        {LogCategoryWebBrowser, QT_TRANSLATE_NOOP("ActionLog", "Web browser")},
        {LogCategoryNetworkMessages, QT_TRANSLATE_NOOP("ActionLog", "Network messages")},
        {LogCategorySoftbuttons, QT_TRANSLATE_NOOP("ActionLog", "Softbuttons")},
        {LogCategoryConfiguration, QT_TRANSLATE_NOOP("ActionLog", "Orvane configuration")},
        {LogCategoryQuit, QT_TRANSLATE_NOOP("ActionLog", "Quit")},
        {LogCategoryLayoutManager, QT_TRANSLATE_NOOP("ActionLog", "Layout Manager")},
        {LogCategoryDisplayScaling, QT_TRANSLATE_NOOP("ActionLog", "Display scaling")},
        {LogCategoryContextMenus, QT_TRANSLATE_NOOP("ActionLog", "Context menus")},
        {LogCategoryActionLogging, QT_TRANSLATE_NOOP("ActionLog", "Action log")},
        {LogCategoryEventSearch, QT_TRANSLATE_NOOP("ActionLog", "Event Search")},
        {LogCategoryExport, QT_TRANSLATE_NOOP("ActionLog", "Export")},
        {LogCategoryLocalArchive, QT_TRANSLATE_NOOP("ActionLog", "Local archive")},
        {LogCategoryVideoSearch, QT_TRANSLATE_NOOP("ActionLog", "Video search")},
        {LogCategoryPlay, QT_TRANSLATE_NOOP("ActionLog", "Play")},
        {LogCategoryViewing, QT_TRANSLATE_NOOP("ActionLog", "Viewing")},
        {LogCategoryAlarm, QT_TRANSLATE_NOOP("ActionLog", "Alarm")},
        {LogCategorySequencer, QT_TRANSLATE_NOOP("ActionLog", "Sequencer")},
        {LogCategoryLayout, QT_TRANSLATE_NOOP("ActionLog", "Layout")},
        {LogCategoryAudio, QT_TRANSLATE_NOOP("ActionLog", "Audio")},
        {LogCategoryPTZ, QT_TRANSLATE_NOOP("ActionLog", "PTZ")},
        {LogCategoryPTZPost, QT_TRANSLATE_NOOP("ActionLog", "PTZ post")},
        {LogCategoryPTZConfig, QT_TRANSLATE_NOOP("ActionLog", "PTZ config")},
        {LogCategoryPTZPostConfig, QT_TRANSLATE_NOOP("ActionLog", "PTZ post config")},
        {LogCategorySignalOuts, QT_TRANSLATE_NOOP("ActionLog", "Signal outs")},
        {LogCategoryError, QT_TRANSLATE_NOOP("ActionLog", "Error")},
        {LogCategoryRemoteControl, QT_TRANSLATE_NOOP("ActionLog", "Remote control")},
        {LogCategoryDevices, QT_TRANSLATE_NOOP("ActionLog", "Devices")},
        {LogCategorySystem, QT_TRANSLATE_NOOP("ActionLog", "System")},
    }};

    QString findName(ELogCategory code)
    {
        auto const isIt = [code](Category const& row) { return row.code == code; };
        auto const* const row = std::find_if(Categories.begin(), Categories.end(), isIt);
        return row != Categories.end() ? translated(row->name) : findName(LogCategoryNone);
    }

} // namespace

LogCategory::LogCategory(ELogCategory code)
    : m_code(code)
    , m_name(findName(code))
{
}

QStringList LogCategory::categoryNames()
{
    QStringList names;
    for (Category const& row : Categories)
        names.append(translated(row.name));
    names.sort();
    return names;
}

} // namespace qv
