// The addresses of the images in an HTML document.
#pragma once

#include <functional>

#include "lumrmisc/platform/types.h"

namespace lumr {

// Gets the address of an image, character references decoded and white space around it dropped.
// Returns 0 to leave it alone, or another number to have it replaced by what address then holds.
using ImageSourceConverter = std::function<int(CStringW& address)>;

// Hands the address of every image that a document shows to convert, in the order of the text:
// src of the tags img, image and input, background of body, table, td, th and tr, poster
// of video (an attribute that comes twice, twice). A replaced address is put in double quotes, what
// is markup in it escaped; everything else stays as it is, to the unit. Use it to show the parts of
// a mail (cid:) or to hold back what would be fetched. Style sheets are not looked into, nor is a
// tag that lacks its end, which shows nothing (and would, were its quotes mended). Tags are those
// of FindTag (html/tagscan.h). Returns how many were replaced. What convert throws leaves the
// document as it was. Linear in the text.
int ConvertImgSrc(CStringW& html, const ImageSourceConverter& convert);

}  // namespace lumr
