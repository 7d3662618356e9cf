// SPDX-License-Identifier: LGPL-2.1-or-later
#pragma once

#include <qvbase/RecordReader_p.h>

namespace qv::encrypted {

/// How a file ends: its last record, and what lies behind.
struct FileTail {
    using Class = FileEncrypt::VerifyResult::Class;

    Tail tail;
    qint64 fileSize = FileHeader::Length;
    Class rest
        = FileEncrypt::VerifyResult::Intact; ///< of the bytes behind the last record; Intact where there are none

    qint64 restSize() const { return fileSize - tail.end; }
    bool isClean() const { return rest == FileEncrypt::VerifyResult::Intact; }
    /// Plain bytes a reader is told of: those behind a fault count as well, so that he comes to read it.
    qint64 readableSize() const;
};

/// The class of the bytes from @p due.end to the file's end, where no good record begins.
FileTail::Class classOfRest(RecordReader& reader, Tail const& due);

/// Up to the last good record. Costs the same for any file: a read at its end, one for the session and as many more as
/// the last write has records. What follows that record, where something does, is searched through; see
/// RecordFinder::lastWholeUpTo(). At most 65536 records with a bad tag are met on the way.
FileTail findTail(RecordReader& reader, FileHeader const& header);

} // namespace qv::encrypted
