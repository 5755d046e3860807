"""render_in_qgis.py JOB PICTURE: the job in QGIS without a screen, drawn as its own styles say.

Run with QT_QPA_PLATFORM=offscreen, and GDAL_DRIVER_PATH at the folder of the driver.
"""

import hashlib
import pathlib
import sys

from qgis.core import (
    QgsApplication,
    QgsCoordinateReferenceSystem,
    QgsEmbeddedSymbolRenderer,
    QgsMapRendererParallelJob,
    QgsMapSettings,
    QgsNullSymbolRenderer,
    QgsPalLayerSettings,
    QgsProperty,
    QgsTextFormat,
    QgsUnitTypes,
    QgsVectorLayer,
    QgsVectorLayerSimpleLabeling,
    QgsWkbTypes,
)
from qgis.PyQt.QtCore import QSize, Qt
from qgis.PyQt.QtGui import QColor, QImage

job, picture = sys.argv[1:]
before = hashlib.sha256(pathlib.Path(job).read_bytes()).hexdigest()
QgsApplication.setPrefixPath("/usr", True)
application = QgsApplication([], False)
application.initQgis()


def load(name):
    layer = QgsVectorLayer(f"{job}|layername={name}", name, "ogr")
    assert layer.isValid(), f"{name}: {layer.error().message()}"
    assert layer.dataProvider().storageType() == "CqSurvey", layer.dataProvider().storageType()
    return layer


points, lines, circles, texts = (load(name) for name in ("points", "polylines", "circles", "texts"))
assert points.featureCount() == 413 and lines.featureCount() == 14
assert points.crs() == QgsCoordinateReferenceSystem("EPSG:32633"), points.crs().authid()
assert points.wkbType() == QgsWkbTypes.PointZ, QgsWkbTypes.displayString(points.wkbType())
assert lines.wkbType() == QgsWkbTypes.CompoundCurveZ
assert not points.isEditable()
arcs = sum(1 for feature in lines.getFeatures() if "CircularString" in feature.geometry().asWkt())
assert arcs > 0, "no arcs"
print(f"{points.featureCount()} points, {lines.featureCount()} polylines, {arcs} of them with arcs")

# Without being told, QGIS draws the styles of the features themselves.
for layer in (points, lines, circles):
    assert isinstance(layer.renderer(), QgsEmbeddedSymbolRenderer), layer.renderer().type()


def label(layer, settings, colour, size, unit):
    form = QgsTextFormat()
    form.setColor(QColor(colour))
    form.setSize(size)
    form.setSizeUnit(unit)
    settings.setFormat(form)
    layer.setLabeling(QgsVectorLayerSimpleLabeling(settings))
    layer.setLabelsEnabled(True)


names = QgsPalLayerSettings()
names.fieldName = "name"
label(points, names, "#404040", 5, QgsUnitTypes.RenderPoints)
drawn = QgsPalLayerSettings()
drawn.fieldName = "text"
drawn.placement = QgsPalLayerSettings.OverPoint
drawn.displayAll = True
drawn.priority = 10
properties = drawn.dataDefinedProperties()
properties.setProperty(QgsPalLayerSettings.Size, QgsProperty.fromField("text_height"))
properties.setProperty(QgsPalLayerSettings.LabelRotation, QgsProperty.fromExpression("-rotation"))
drawn.setDataDefinedProperties(properties)
label(texts, drawn, "#aa0077", 3, QgsUnitTypes.RenderMapUnits)
# The points of the texts themselves are nothing to see.
texts.setRenderer(QgsNullSymbolRenderer())

settings = QgsMapSettings()
settings.setLayers([texts, points, circles, lines])
settings.setBackgroundColor(QColor("white"))
settings.setOutputSize(QSize(1000, 800))
settings.setOutputDpi(100)
settings.setDestinationCrs(points.crs())
extent = points.extent()
extent.scale(1.03)
settings.setExtent(extent)
renderer = QgsMapRendererParallelJob(settings)
renderer.start()
renderer.waitForFinished()
assert not renderer.errors(), [error.message for error in renderer.errors()]
image = renderer.renderedImage()
# A palette makes the file small.
assert image.convertToFormat(QImage.Format_Indexed8, Qt.ThresholdDither | Qt.AvoidDither).save(picture), picture
inked = sum(
    1
    for x in range(0, image.width(), 3)
    for y in range(0, image.height(), 3)
    if image.pixelColor(x, y).lightness() < 200
)
assert inked > 500, f"the picture is nearly empty: {inked}"
colours = {
    image.pixelColor(x, y).name()
    for x in range(0, image.width(), 2)
    for y in range(0, image.height(), 2)
}
assert "#007f00" in colours, "no tree has the green of its layer"

# Every layer must be gone before QGIS is.
del renderer, settings, points, lines, circles, texts, layer
application.exitQgis()
after = hashlib.sha256(pathlib.Path(job).read_bytes()).hexdigest()
assert after == before, "the job was changed"
print("drawn; the job is the same to the byte")
