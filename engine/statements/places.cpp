// Opening datasets and attributes.
#include "statements/places.h"

#include "error.h"
#include "session.h"
#include "storage/attribute.h"

namespace kelvo {

void expect_no_attribute(const Target& target, ObjectKind wanted) {
  if (!target.attribute) return;
  throw StatementError(Status::wrong_kind,
                       quoted(target.shown()) + " is an attribute, not " + with_article(wanted));
}

ElementPlace open_place(const Target& target, Session& session) {
  if (target.attribute) {
    const ObjectHandle object = open_object(target.file, target.path);
    return place_of(open_attribute(object.get(), target.path, *target.attribute),
                    "Attribute " + quoted(target.shown()));
  }
  expect_dataset(target.file, target.path);
  ElementPlace place =
      place_of(open_for_reading(target.file, target.path, session.settings().chunk_cache),
               "Dataset " + quoted(target.path));
  place.threads = session.settings().threads;
  return place;
}

}  // namespace kelvo
