#pragma once

#include "tables/RecordLayout.h"

namespace cqsurvey {

// The ten tables of a job. The names, types and order of the fields are part of the file format;
// docs/format.md says what each field means.
//
// An entity names its own data by ObjectType, which tells the table, and ObjectIndex, which tells
// the record:
//
//     _EntityData  -> _PointData, _PlineData, _VertexData, _TextData, _CircleData or _BitmapData
//                  -> _Layer                         LayerIndex
//                  -> _EntityData                    PrevEntityIndex, NextEntityIndex: the drawing
//     _PointData   -> _EntityData, _GroupData        EntityIndex, GroupIndex
//     _VertexData  -> _EntityData                    PlineIndex: its polyline
//     _PointToVertexLink -> _EntityData (twice)      PointDataID, VertexDataID

using BitmapLayout = RecordLayout<"_BitmapData",                  //
                                  Field<"ResName", field::Memo>,  //
                                  Field<"sizeX", field::Double>,  //
                                  Field<"DataOrigin", field::Word>>;

using CircleLayout = RecordLayout<"_CircleData",                    //
                                  Field<"Radius", field::Double>,   //
                                  Field<"LineID", field::Integer>,  //
                                  Field<"FeatureCode", field::Integer>>;

using EntityLayout = RecordLayout<"_EntityData",                           //
                                  Field<"ObjectType", field::Word>,        //
                                  Field<"ObjectIndex", field::Dword>,      //
                                  Field<"LayerIndex", field::Word>,        //
                                  Field<"ColorID", field::Integer>,        //
                                  Field<"N", field::Double>,               //
                                  Field<"E", field::Double>,               //
                                  Field<"Z", field::Double>,               //
                                  Field<"PrevEntityIndex", field::Dword>,  //
                                  Field<"NextEntityIndex", field::Dword>>;

using LayerLayout = RecordLayout<"_Layer",                          //
                                 Field<"Name", field::Text52>,      //
                                 Field<"ColorID", field::Integer>,  //
                                 Field<"LineID", field::Word>>;

using PlineLayout = RecordLayout<"_PlineData",                          //
                                 Field<"FeatureCode", field::Integer>,  //
                                 Field<"LineID", field::Integer>,       //
                                 Field<"minX", field::Double>,          //
                                 Field<"minY", field::Double>,          //
                                 Field<"maxX", field::Double>,          //
                                 Field<"maxY", field::Double>,          //
                                 Field<"VertexIndex", field::Dword>>;

using PointLayout = RecordLayout<"_PointData",                          //
                                 Field<"PointNumber", field::Dword>,    //
                                 Field<"PointName", field::Text20>,     //
                                 Field<"FeatureFlags", field::Dword>,   //
                                 Field<"FeatureCode", field::Integer>,  //
                                 Field<"RecTime", field::Dword>,        //
                                 Field<"DataOrigin", field::Word>,      //
                                 Field<"EntityIndex", field::Dword>,    //
                                 Field<"GroupIndex", field::Word>>;

using LinkLayout = RecordLayout<"_PointToVertexLink",                //
                                Field<"PointDataID", field::Dword>,  //
                                Field<"VertexDataID", field::Dword>>;

using TextLayout = RecordLayout<"_TextData",                           //
                                Field<"Text", field::Memo>,            //
                                Field<"Align", field::Integer>,        //
                                Field<"Style", field::Text24>,         //
                                Field<"Height", field::Double>,        //
                                Field<"Rotation", field::Double>,      //
                                Field<"FeatureCode", field::Integer>,  //
                                Field<"OptionStyle", field::Dword>,    //
                                Field<"Interval", field::Integer>,     //
                                Field<"Thickness", field::Integer>>;

using VertexLayout = RecordLayout<"_VertexData",                  //
                                  Field<"Bulge", field::Double>,  //
                                  Field<"PlineIndex", field::Dword>>;

using GroupLayout = RecordLayout<"_GroupData",  //
                                 Field<"GroupName", field::Text20>>;

}  // namespace cqsurvey
