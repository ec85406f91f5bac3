// Typed accessors of block references, hatches, solids, regions, bodies, surfaces, meshes, faces, traces, shapes, lights, sections, images, OLE frames, underlays, viewports, proxies.
#pragma once

// X(accessor name, kind): see accessors.h. Names are the host's accessor names; where the host uses one name
// on several kinds of entity that other families also ask about (rotation, name, width, height, area), the
// entity kind leads the name so that the families' lists never name one accessor twice.
#define VK_ACCESSORS_BLOCKS(X)                                                                              \
  /* block references (AcDbBlockReference); the insertion point is the common position */                 \
  X(blockName, Text)           /* the block table record's name */                                         \
  X(blockRotation, Real)       /* rotation */                                                              \
  X(blockScaleFactors, Vector) /* scaleFactors */                                                          \
  /* hatches (AcDbHatch) */                                                                                \
  X(hatchObjectType, Integer) /* 0 pattern hatch, 1 gradient */                                            \
  X(patternAngle, Real)                                                                                    \
  X(patternScale, Real)                                                                                    \
  X(patternSpace, Real)                                                                                    \
  X(patternType, Integer) /* 0 user-defined, 1 predefined, 2 custom */                                     \
  X(patternName, Text)                                                                                     \
  X(numLoops, Integer)                                                                                     \
  X(loopTypes, Reals) /* the type flags of the boundary loops, in order */                                 \
  /* modeler geometry (regions, bodies, 3D solids, surfaces): the ACIS text and what it measures */       \
  X(acisData, Text)       /* the SAT text, decrypted; empty when the drawing keeps it elsewhere */         \
  X(acisDigest, Text)     /* a digest of the SAT records, equal for equal shapes; empty without data */    \
  X(modelerArea, Real)    /* getArea; NaN when the faces are not all planar polygons */                     \
  X(modelerVolume, Real)  /* getMassProp volume; NaN when it cannot be measured */                          \
  X(radiiGyration, Vector) /* getMassProp radii of gyration about the WCS axes; NaN likewise */            \
  /* surfaces */                                                                                           \
  X(sweepVec, Vector)          /* AcDbExtrudedSurface::getSweepVec */                                       \
  X(revolveAxisPoint, Point)   /* AcDbRevolvedSurface::getAxisPnt */                                        \
  X(revolveAxisVec, Vector)    /* AcDbRevolvedSurface::getAxisVec */                                        \
  X(revolveAngle, Real)        /* AcDbRevolvedSurface::getRevolveAngle */                                   \
  X(numCrossSections, Integer) /* AcDbLoftedSurface: the curves stored with the surface */                  \
  X(numGuideCurves, Integer)                                                                               \
  X(sweepPathData, Text)       /* AcDbSweptSurface: a digest of the stored path curve */                    \
  X(isIndependent, Integer)    /* 1 when nothing keeps the surface associated */                            \
  /* subdivision meshes (AcDbSubDMesh) */                                                                  \
  X(meshVertices, Points)                                                                                  \
  X(isWatertight, Integer)                                                                                 \
  X(numOfFaces, Integer)                                                                                   \
  X(numOfVertices, Integer)                                                                                \
  X(numOfSubDividedVertices, Integer)                                                                      \
  X(numOfEdges, Integer)                                                                                   \
  /* 3D faces, 2D solids and traces: the corners in WCS, in the stored order */                           \
  X(cornerPoints, Points)                                                                                  \
  X(invisibleEdgeFlags, Integer) /* AcDbFace: bit i set when edge i is invisible */                        \
  /* shapes (AcDbShape) */                                                                                 \
  X(shapeName, Text)                                                                                       \
  X(shapeSize, Real)                                                                                       \
  X(shapeRotation, Real)                                                                                   \
  X(shapeWidthFactor, Real)                                                                                \
  X(shapeOblique, Real)                                                                                    \
  /* lights (AcDbLight) */                                                                                 \
  X(lightName, Text)                                                                                       \
  X(lightTargetLocation, Point)                                                                            \
  X(lightType, Integer)                                                                                    \
  /* sections (AcDbSection) */                                                                             \
  X(sectionState, Integer)                                                                                 \
  X(isLiveSectionEnabled, Integer)                                                                         \
  X(sectionVertices, Points)                                                                               \
  /* raster images and wipeouts (AcDbRasterImage) */                                                       \
  X(imageUVector, Vector) /* the image's bottom edge, origin to lower right corner */                      \
  X(imageVVector, Vector) /* its left edge, origin to upper left corner */                                 \
  X(imageFileName, Text)  /* the image definition's file name */                                           \
  X(clipBoundary, Points) /* the clip boundary, in pixels */                                               \
  /* underlays (AcDbUnderlayReference) */                                                                  \
  X(underlayRotation, Real)                                                                                \
  X(underlayScaleFactors, Vector)                                                                          \
  X(underlayFlags, Integer) /* 1 clipped, 2 on, 4 monochrome, 8 adjusted for the background */             \
  X(underlayContrast, Integer)                                                                             \
  X(underlayFade, Integer)                                                                                 \
  X(underlayFileName, Text) /* the underlay definition's file name */                                      \
  X(underlayClipBoundary, Points)                                                                          \
  /* OLE frames (AcDbOle2Frame) */                                                                         \
  X(oleUpperLeft, Point)                                                                                   \
  X(oleLowerRight, Point)                                                                                  \
  X(oleObjectType, Integer) /* 1 link, 2 embedded, 3 static */                                             \
  /* viewports (AcDbViewport) */                                                                           \
  X(viewportWidth, Real)                                                                                   \
  X(viewportHeight, Real)                                                                                  \
  X(viewportNumber, Integer)                                                                               \
  X(viewportBrightness, Real)                                                                              \
  X(viewportContrast, Real)                                                                                \
  X(viewHeight, Real)                                                                                      \
  X(viewCenter, Point) /* in display coordinates */                                                        \
  X(twistAngle, Real)                                                                                      \
  X(lensLength, Real)                                                                                      \
  X(viewportStatusFlags, Integer) /* 2 front clip on, 4 back clip on, ... */                               \
  X(snapAngle, Real)                                                                                       \
  /* proxy entities (AcDbProxyEntity) */                                                                   \
  X(proxyDataFormat, Integer)        /* the original data format flag */                                   \
  X(proxyApplicationClassId, Integer)                                                                      \
  X(proxyObjectIdCount, Integer)     /* the object ids the proxy keeps */                                  \
  X(proxyGraphicsData, Text)         /* a digest of the proxy graphics, empty without them */
