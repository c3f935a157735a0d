#ifndef PICTAVO_SAMPLES_HOST_DEMO_CONTACT_SHEET_H_
#define PICTAVO_SAMPLES_HOST_DEMO_CONTACT_SHEET_H_

#include <string>
#include <vector>

#include "base/picture.h"

namespace host {

/// A labelled picture of a contact sheet.
struct SheetPicture {
  Picture thumbnail;
  std::string name;
  std::string tag;       // at the right of the name
  std::string lines[2];  // below it
};

struct SheetColumn {
  std::string heading;
  std::vector<SheetPicture> pictures;
};

/// A picture in the size that a contact sheet shows it.
Picture Thumbnail(const Picture& picture);

/// Draws the columns side by side, transparent pictures on a checkerboard. Throws Failure when
/// Windows cannot draw the text.
Picture DrawContactSheet(const std::string& title, const std::string& subtitle,
                         const std::vector<SheetColumn>& columns);

}  // namespace host

#endif  // PICTAVO_SAMPLES_HOST_DEMO_CONTACT_SHEET_H_
