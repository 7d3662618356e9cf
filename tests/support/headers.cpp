// SPDX-License-Identifier: LGPL-2.1-or-later
// Empty: the object that the tests' precompiled headers belong to.
