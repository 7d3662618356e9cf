// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <GenericUtilities/Export.h>
#include <GenericUtilities/actionlog/FourChars.h>

#include <QString>
#include <QStringList>

namespace qv {

/// What an action is about. The codes are stored; never change them.
enum ELogCategory : quint32 {
    LogCategoryNone = FourChars("    ").value(),
    LogCategoryAccess = FourChars("Aces").value(),
    LogCategoryLogonLogoff = FourChars("Logn").value(),
    LogCategoryUserGroups = FourChars("UsGr").value(),
    LogCategoryAuthorize = FourChars("Auth").value(),
    LogCategorySoftwareUpdates = FourChars("SoUp").value(),
    LogCategoryCameraSettings = FourChars("cSet").value(),
    LogCategoryWebBrowser = FourChars("cWeB").value(),
    LogCategoryNetworkMessages = FourChars("NMsg").value(),
    LogCategorySoftbuttons = FourChars("SofB").value(),
    LogCategoryConfiguration = FourChars("appC").value(),
    LogCategoryQuit = FourChars("aQit").value(),
    LogCategoryLayoutManager = FourChars("lMgr").value(),
    LogCategoryDisplayScaling = FourChars("DspS").value(),
    LogCategoryContextMenus = FourChars("cMen").value(),
    LogCategoryActionLogging = FourChars("aLog").value(),
    LogCategoryEventSearch = FourChars("Srch").value(),
    LogCategoryExport = FourChars("Expt").value(),
    LogCategoryLocalArchive = FourChars("LoAr").value(),
    LogCategoryVideoSearch = FourChars("SrVi").value(),
    LogCategoryPlay = FourChars("Play").value(),
    LogCategoryViewing = FourChars("View").value(),
    LogCategoryAlarm = FourChars("Alrm").value(),
    LogCategorySequencer = FourChars("Sequ").value(),
    LogCategoryLayout = FourChars("Layo").value(),
    LogCategoryAudio = FourChars("Audi").value(),
    LogCategoryPTZ = FourChars("lPTZ").value(),
    LogCategoryPTZPost = FourChars("pPTZ").value(),
    LogCategoryPTZConfig = FourChars("lPtC").value(),
    LogCategoryPTZPostConfig = FourChars("pPtC").value(),
    LogCategorySignalOuts = FourChars("cSgO").value(),
    LogCategoryError = FourChars("Eror").value(),
    LogCategoryRemoteControl = FourChars("Cont").value(),
    LogCategoryDevices = FourChars("Devi").value(),
    LogCategorySystem = FourChars("Syst").value(),
};

/// A category and its name in the user's language, as it was at construction. An unknown code is called "None".
class GENERICUTILITIES_EXPORT LogCategory {
public:
    LogCategory(ELogCategory code);

    ELogCategory code() const { return m_code; }
    QString const& name() const { return m_name; }

    /// The translated names of all 35 categories, sorted by their UTF-16 code units.
    static QStringList categoryNames();

private:
    ELogCategory m_code;
    QString m_name;
};

} // namespace qv
