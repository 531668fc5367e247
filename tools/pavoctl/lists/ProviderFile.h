// SPDX-FileCopyrightText: The Pavor Authors
// SPDX-License-Identifier: Apache-2.0

// GNOME's list of mobile operators: <serviceproviders><country><provider><gsm> with <network-id/>
// and <apn value="..">.
#pragma once

#include "lists/ApnFile.h"

namespace pavoctl {

// Every <apn> becomes an entry in the words of Android's list. Its usage becomes APN types, and the
// entry's networks are those of its operator. Elements that neither are an access point nor lead to
// one are remarked.
ApnFile readProviders(const XmlElement& root);

}  // namespace pavoctl
