#include "scene/Material.h"
#include "scene/MaterialParams.h"
#include "scene/SceneNodeMaterial.h"
#include "scene/SceneNodeTonemapping.h"
#include "scene/SceneXMLWriter.h"
#include "scene/Spectra.h"
#include "scene/nodes/SceneNodeCamera.h"
#include "tests/support/FileBytes.h"
#include "tests/support/Golden.h"
#include "tests/support/TempDir.h"

#include <gtest/gtest.h>

using namespace Velmar;
using namespace TestSupport;

TEST(SceneDocument, ASmallSceneIsWrittenWhole) {
    const Reference<DiffuseMaterial> diffuse(new DiffuseMaterial);
    diffuse->albedo = new ConstantWavelengthDependentParam(new RGBSpectrum({0.8, 0.8, 0.8}, 2.2));
    const Reference<SceneNodeMaterial> material(new SceneNodeMaterial);
    material->material = diffuse;
    material->setName("Default");

    const Reference<SceneNodeRoot> root(new SceneNodeRoot);
    root->addChildNode(material);
    root->addChildNode(new SceneNodeTonemapping);
    root->addChildNode(new SceneNodeCamera);
    const TempDir dir;
    writeSceneXML(*root, toVelmarString(dir.file("scene.xml")), true, nullptr);

    expectGolden(readFileBytes(dir.file("scene.xml")), withSystemLineEnds(R"(<?xml version="1.0" encoding="utf-8"?>
<scene>
	<material>
		<uid>1</uid>
		<name>Default</name>
		<diffuse>
			<albedo>
				<constant>
					<rgb>
						<rgb>0.8 0.8 0.8</rgb>
						<gamma>2.2</gamma>
					</rgb>
				</constant>
			</albedo>
		</diffuse>
	</material>

	<tonemapping>
		<uid>2</uid>
		<name>Tone Mapping</name>
		<linear>
			<scale>1</scale>
		</linear>
	</tonemapping>

	<camera>
		<uid>3</uid>
		<name>Camera</name>
		<aperture_radius>0.001</aperture_radius>
		<focus_distance>20</focus_distance>
		<sensor_width>0.036</sensor_width>
		<lens_sensor_dist>0.036</lens_sensor_dist>
		<exposure_duration>0.333</exposure_duration>
		<lens_shift_up_distance>0</lens_shift_up_distance>
		<lens_shift_right_distance>0</lens_shift_right_distance>
		<autofocus/>
		<aperture_shape>
			<circular/>
		</aperture_shape>
		<up>0 0 1</up>
		<forwards>0 1 0</forwards>
		<camera_type>thin-lens-perspective</camera_type>
	</camera>
</scene>
)"));
}
