#include "qx4d/core/scene/ObjectInstance.h"

#include "qx4d/content/MeshItem.h"
#include "qx4d/content/Object.h"
#include "qx4d/core/TextReader.h"
#include "qx4d/core/scene/Scene.h"

namespace qx4d {

void ObjectInstance::Update(float sceneTime, float timeStep)
{
    Entity::Update(sceneTime, timeStep);
    time += timeStep;
}

void ObjectInstance::EvaluateRecords(float sceneTime)
{
    records.clear();
    if (!object) return;
    object->Update(time, matrix);
    for (const Object::ItemRecord& item : object->records) {
        MeshItem* mesh = Object::DrawnMesh(item.item);
        if (!mesh) continue;
        mesh->SetTime(sceneTime);
        DrawRecord record{mesh, object, {item.item->matrix}};
        // A skinned mesh is placed by its bones.
        if (mesh->material.bones > 0) record.matrices = mesh->bones;
        records.push_back(std::move(record));
    }
}

bool ObjectInstance::ReadOwnKey(const String& key, TextReader& reader, Scene& scene, bool& refuse)
{
    if (key == u"Dissolve") {
        ReadChannel(dissolve, reader);
    } else if (key == u"FileName") {
        String fileName;
        reader.ReadValue(fileName);
        object = scene.FindObject(fileName);
        refuse = object == nullptr;
    } else {
        return false;
    }
    return true;
}

}  // namespace qx4d
