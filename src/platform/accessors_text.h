// Typed accessors of text, multiline text, attributes, dimensions, leaders, tolerances, tables.
#pragma once

// X(accessor name, kind): see accessors.h. Names that other families' entities also have in the host
// (height, rotation, oblique, width) carry the "text" or "mtext" prefix of the class that answers them here.
#define VK_ACCESSORS_TEXT(X)                                                                              \
  /* single-line text, attributes, attribute definitions (position: the common accessor) */              \
  X(alignmentPoint, Point)       /* AcDbText::alignmentPoint */                                           \
  X(textHeight, Real)            /* AcDbText::height, AcDbMText::textHeight */                            \
  X(textWidthFactor, Real)       /* AcDbText::widthFactor */                                              \
  X(textOblique, Real)           /* AcDbText::oblique */                                                  \
  X(textRotation, Real)          /* AcDbText::rotation, AcDbMText::rotation, AcDbDimension::textRotation */ \
  X(horizontalMode, Integer)     /* AcDbText::horizontalMode */                                           \
  X(verticalMode, Integer)       /* AcDbText::verticalMode */                                             \
  X(textString, Text)            /* AcDbText::textString */                                               \
  X(textStyleName, Text)         /* the name of the text style record (textStyle, DIMTXSTY) */            \
  X(lockPositionInBlock, Integer) /* AcDbAttribute(Definition)::lockPositionInBlock */                    \
  X(isMTextAttribute, Integer)   /* AcDbAttribute::isMTextAttribute, ...Definition::isMTextAttributeDefinition */ \
  X(tag, Text)                   /* AcDbAttribute(Definition)::tag */                                     \
  X(prompt, Text)                /* AcDbAttributeDefinition::prompt */                                    \
  /* multiline text (location: the common position) */                                                   \
  X(mtextWidth, Real)            /* AcDbMText::width */                                                   \
  X(actualHeight, Real)          /* AcDbMText::actualHeight */                                            \
  X(lineSpacingFactor, Real)     /* AcDbMText::lineSpacingFactor, AcDbDimension::textLineSpacingFactor */ \
  X(lineSpacingStyle, Integer)   /* AcDbMText::lineSpacingStyle, AcDbDimension::textLineSpacingStyle */   \
  X(contents, Text)              /* AcDbMText::contents */                                                \
  X(direction, Vector)           /* AcDbMText::direction, AcDbFcf::direction, AcDbTable::direction */     \
  /* dimensions */                                                                                        \
  X(dimensionText, Text)         /* AcDbDimension::dimensionText */                                       \
  X(textAttachment, Integer)     /* AcDbDimension::textAttachment */                                      \
  X(horizontalRotation, Real)    /* AcDbDimension::horizontalRotation */                                  \
  X(textPosition, Point)         /* AcDbDimension::textPosition */                                        \
  X(dimBlockPosition, Point)     /* AcDbDimension::dimBlockPosition */                                    \
  X(isDynamicDimension, Integer) /* AcDbDimension::isDynamicDimension */                                  \
  X(xLine1Point, Point)          /* AcDbAlignedDimension, AcDb3PointAngularDimension::xLine1Point */      \
  X(xLine2Point, Point)          /* ...::xLine2Point */                                                   \
  X(dimLinePoint, Point)         /* AcDbAlignedDimension::dimLinePoint */                                 \
  X(dimensionOblique, Real)      /* AcDbAlignedDimension::oblique */                                      \
  X(centerPoint, Point)          /* AcDbRadialDimension::center, AcDb3PointAngularDimension::centerPoint */ \
  X(chordPoint, Point)           /* AcDbRadialDimension, AcDbDiametricDimension::chordPoint */            \
  X(farChordPoint, Point)        /* AcDbDiametricDimension::farChordPoint */                              \
  X(leaderLength, Real)          /* AcDbRadialDimension, AcDbDiametricDimension::leaderLength */          \
  X(extArcStartAngle, Real)      /* ...::extArcStartAngle */                                              \
  X(extArcEndAngle, Real)        /* ...::extArcEndAngle */                                                \
  X(arcPoint, Point)             /* AcDb3PointAngularDimension::arcPoint */                               \
  X(extArcOn, Integer)           /* AcDb3PointAngularDimension::extArcOn */                               \
  X(ordinateOrigin, Point)       /* AcDbOrdinateDimension::origin */                                      \
  X(definingPoint, Point)        /* AcDbOrdinateDimension::definingPoint */                               \
  X(leaderEndPoint, Point)       /* AcDbOrdinateDimension::leaderEndPoint */                              \
  /* leaders */                                                                                           \
  X(hasArrowHead, Integer)       /* AcDbLeader::hasArrowHead */                                           \
  X(hasHookLine, Integer)        /* AcDbLeader::hasHookLine */                                            \
  X(isSplined, Integer)          /* AcDbLeader::isSplined */                                              \
  X(leaderVertices, Points)      /* AcDbLeader::vertexAt for every vertex */                              \
  /* geometric tolerances */                                                                              \
  X(toleranceText, Text)         /* AcDbFcf::text */                                                      \
  X(dimgap, Real)                /* AcDbFcf::dimgap */                                                    \
  X(dimscale, Real)              /* AcDbFcf::dimscale */                                                  \
  X(dimtxt, Real)                /* AcDbFcf::dimtxt */                                                    \
  /* tables */                                                                                            \
  X(numRows, Integer)            /* AcDbTable::numRows */                                                 \
  X(numColumns, Integer)         /* AcDbTable::numColumns */                                              \
  X(rowHeights, Reals)           /* AcDbTable::rowHeight of every row */                                  \
  X(columnWidths, Reals)         /* AcDbTable::columnWidth of every column */                             \
  X(cellTexts, Texts)            /* AcDbTable::textString (or the block's name) of every cell, row by row */ \
  X(cellDates, Texts)            /* the date value of every cell, row by row ("" when not a date) */      \
  X(flowDirection, Integer)      /* AcDbTable::flowDirection */                                           \
  X(tableFlags, Reals)           /* the table-wide flag words: value (90), overrides (93), border colour, \
                                    lineweight and visibility overrides (94 to 96) */
