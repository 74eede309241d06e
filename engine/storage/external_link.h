// External links, followed within reach only.
#pragma once

namespace kelvo {

/// Puts a link class of ours in the place of the HDF5 library's own for external links, so that
/// whatever follows one keeps the rule of storage/reach.h.
///
/// A link that is refused, or whose file cannot be opened, makes the call that follows it fail;
/// fail_hdf5 then throws the refusal itself.
void guard_external_links();

/// After the HDF5 library was left in the middle of a call: no link is being followed.
void forget_followed_links() noexcept;

}  // namespace kelvo
